#include "engine/calculation.h"
#include "engine/formula.h"

#include <array>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

std::string mebibyteOf(std::string_view text) {
    return repeated(text, kMebibyte / text.size() + 1);
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string result;
    for (const std::string_view part : parts) {
        result += part;
    }
    return result;
}

/// Expects `message` as the answer to a mebibyte of each text.
void expectMebibytes(std::string_view message, Rows texts) {
    for (const std::string_view text : texts) {
        EXPECT_EQ(answer(mebibyteOf(text)), message) << text;
    }
}

/// Runs `work` in a thread with a stack so small that whatever recurses over a formula, or keeps a
/// table's rows there, overflows it.
void onSmallStack(void (*work)()) {
    constexpr std::size_t kStack = std::size_t{256} << 10;
    const auto run = [](void* argument) -> void* {
        (*static_cast<void (**)()>(argument))();
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_t thread{};
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

/// Expects `formula`, of the variable x alone, to give x in the rows of a table.
void expectColumnOfX(const std::string& formula) {
    using namespace varo::engine;
    std::vector<double> numbers(1000);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        numbers[i] = static_cast<double>(i);
    }
    const std::array columns{Column(std::span<const double>(numbers))};
    std::vector<double> results(numbers.size());
    EXPECT_EQ(Formula::parse(formula).evaluateRows(columns, results, {}), 0U);
    EXPECT_EQ(results, numbers);
}

}  // namespace

// Each of these would take a stack as deep as the text, or time in proportion to its square, if the
// engine went about it the obvious way.
TEST(HostileInput, OfAMebibyteIsAnsweredWithoutDeepStacks) {
    onSmallStack([] {
        expectMebibytes("公式嵌套过深！", {"(", "-", "Not ", "sin(", "If(1,2,", "2^", "2^-", "a=(",
                                           "StrLen(StrCat('a',", "foo("});
        expectMebibytes("公式第1个字符“!”处有语法错误！", {"!"});
        expectMebibytes("公式第1个字符“^”处有语法错误！", {"^"});
        expectMebibytes("公式第1个字符“,”处有语法错误！", {","});
        expectMebibytes("公式第2个字符“,”处有语法错误！", {"a,", "1,"});
        expectMebibytes("公式不完整！", {" ", "1+", "a*", "1 Or Not ", "'b'="});
        expectMebibytes("公式第1个字符“\uFFFD”处有语法错误！", {"\xff"});
        expectMebibytes("公式第5个字符“e”处有语法错误！", {"1e+"});
        expectMebibytes("公式中的括号不匹配！", {")"});
        expectMebibytes("计算结果超出范围！", {"9"});
        EXPECT_EQ(answer(joined({"\"", mebibyteOf("\"\"")})), "公式中的文本缺少引号！");
        EXPECT_EQ(answer(joined({"0.", mebibyteOf("0"), "1"})), "0");
        EXPECT_EQ(answer(joined({"0.", mebibyteOf("0"), "1e2097152"})), "计算结果超出范围！");
        EXPECT_EQ(answer(joined({"1", mebibyteOf("!")})), "1");
        EXPECT_EQ(answer(joined({mebibyteOf("1+"), "1"})), "524290");
        EXPECT_EQ(answer(joined({mebibyteOf("１×"), "1"})), "1");
        EXPECT_EQ(answer(joined({mebibyteOf("0 And "), "1"})), "0");
        EXPECT_EQ(answer(joined({mebibyteOf("If(0,1/0,0)+"), "1"})), "1");
        EXPECT_EQ(answer(joined({"StrLen(StrCat('a'", mebibyteOf(",'b'"), "))"})), "262146");
        EXPECT_EQ(answer(joined({mebibyteOf("x-"), "x"}), {{"x", 1.0}}), "-524288");
        EXPECT_EQ(answer(joined({mebibyteOf("If(x,x/x,0)*"), "x"}), {{"x", 1.0}}), "1");
        EXPECT_EQ(answer(joined({"x", mebibyteOf("!")}), {{"x", 2.0}}), "2");
        expectColumnOfX(joined({"x", repeated("+x-x", 10'000)}));
    });
}

TEST(HostileInput, OfManyVariablesIsAnswered) {
    std::string sum = "0";
    std::string chain = "0";
    for (int i = 0; i < 100'000; ++i) {
        const std::string number = std::to_string(i);
        sum += joined({"+v", number});
        chain += joined({" Or v", std::to_string(i + 1), "=v", number});
    }
    const varo::engine::Formula formula = varo::engine::Formula::parse(sum);
    EXPECT_EQ(formula.variableCount(), 100'000U);
    EXPECT_EQ(formula.indexOf("V99999"), 99'999U);
    const varo::engine::Formula joined = varo::engine::Formula::parse(chain + " Or v7=\"x\"");
    EXPECT_EQ(joined.variable(100'000).type, varo::engine::Type::Text);
    EXPECT_EQ(answer(mebibyteOf("a+") + "a", {{"a", 0.5}}), "262145");
}

TEST(HostileInput, MayNestAThousandLevels) {
    onSmallStack([] {
        const auto nested = [](std::string_view open, std::size_t times, std::string_view close) {
            return joined({repeated(open, times), "x", repeated(close, times)});
        };
        EXPECT_EQ(answer(nested("(", 1000, ")"), {{"x", 1.0}}), "1");
        EXPECT_EQ(answer(nested("(", 1001, ")"), {{"x", 1.0}}), "公式嵌套过深！");
        EXPECT_EQ(answer(nested("StrMismatch('a','a',1,1,", 1000, ")"), {{"x", 1.0}}), "1");
        EXPECT_EQ(answer(nested("StrLen(StrSub('ab',1,1,", 500, "))"), {{"x", 1.0}}), "1");
        EXPECT_EQ(answer(repeated("1-(", 500) + "1" + repeated(")", 500)), "1");
        EXPECT_EQ(answer(nested("x^", 1000, ""), {{"x", 1.0}}), "1");
        EXPECT_EQ(answer(nested("1 And (x Or ", 330, ")"), {{"x", 0.0}}), "0");
        for (const std::string& formula :
             {nested("0-(", 500, ")"), nested("int(", 1000, ")"), nested("-", 1000, ""),
              nested("int(", 198, ")"), nested("If(x,", 500, ",x)"),
              nested("If(0,0,", 1000, ")")}) {
            expectColumnOfX(formula);
        }
    });
}

TEST(HostileInput, CannotMultiplyTextsWithoutEnd) {
    const std::string text = joined({"\"", repeated("a", 1000), "\""});
    std::string formula = text;
    for (int i = 0; i < 100; ++i) {
        formula = joined({"StrReplace(", formula, ",\"a\",", text, ",0,0)"});
    }
    EXPECT_EQ(answer(formula), "计算结果超出范围！");
}

TEST(HostileInput, SearchesInTimeProportionalToTheText) {
    const std::string text = repeated("a", kMebibyte);
    const std::string wanted = repeated("a", kMebibyte / 2) + "b";
    EXPECT_EQ(answer("StrFind(s,t,1)", {{"s", text}, {"t", wanted}}), "0");
    EXPECT_EQ(answer("s Like t", {{"s", text}, {"t", wanted}}), "0");
    EXPECT_EQ(answer("StrLen(StrReplace(s,t,s,0,1))", {{"s", text}, {"t", wanted}}), "1048576");
}
