#include "engine/calculation.h"
#include "engine/formula.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

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

}  // namespace

// Each of these would take a stack as deep as the text, or time in proportion to its square, if the
// engine went about it the obvious way.
TEST(HostileInput, OfAMebibyteIsAnsweredWithoutDeepStacks) {
    expectMebibytes("公式嵌套过深！", {"(", "-", "Not ", "sin(", "If(1,2,", "2^"});
    expectMebibytes("公式第1个字符“!”处有语法错误！", {"!"});
    expectMebibytes("公式第1个字符“^”处有语法错误！", {"^"});
    expectMebibytes("公式第1个字符“,”处有语法错误！", {","});
    expectMebibytes("公式第1个字符“\uFFFD”处有语法错误！", {"\xff"});
    expectMebibytes("公式第5个字符“e”处有语法错误！", {"1e+"});
    expectMebibytes("公式中的括号不匹配！", {")"});
    expectMebibytes("公式不完整！", {" "});
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
    const auto nested = [](std::string_view open, std::size_t times, std::string_view close) {
        return repeated(open, times) + "1" + repeated(close, times);
    };
    EXPECT_EQ(answer(nested("(", 1000, ")")), "1");
    EXPECT_EQ(answer(nested("(", 1001, ")")), "公式嵌套过深！");
    EXPECT_EQ(answer(nested("StrMismatch('a','a',1,1,", 1000, ")")), "1");
    EXPECT_EQ(answer(nested("StrLen(StrSub('ab',1,1,", 500, "))")), "1");
    EXPECT_EQ(answer(repeated("1-(", 500) + "x" + repeated(")", 500), {{"x", 1.0}}), "1");
    EXPECT_EQ(answer(repeated("preci(x,", 999) + "x" + repeated(")", 999), {{"x", 1.0}}), "1");
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
