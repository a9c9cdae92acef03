#include "engine/calculation.h"
#include "engine/formula.h"

#include <array>
#include <gtest/gtest.h>
#include <numeric>
#include <pthread.h>
#include <string>
#include <string_view>
#include <vector>

using namespace varo::engine;

namespace {

/// `text` with "{3*ab}" written out as "ababab"; M times is as often as it takes for a mebibyte.
std::string expanded(std::string text) {
    for (std::size_t open = text.find('{'); open != std::string::npos;
         open = text.find('{', open)) {
        const std::size_t star = text.find('*', open);
        const std::size_t close = text.find('}', open);
        const std::string part = text.substr(star + 1, close - star - 1);
        const std::string count = text.substr(open + 1, star - open - 1);
        const std::size_t times = count == "M" ? (1 << 20) / part.size() + 1 : std::stoul(count);
        text.replace(open, close + 1 - open, repeated(part, times));
    }
    return text;
}

void expectExpandedAnswers(std::string_view table, const Given& given) {
    for (const auto& [formula, expected] : rowsOf(table)) {
        EXPECT_EQ(answer(expanded(formula), given), expected) << formula;
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
    std::vector<double> numbers(1000);
    std::iota(numbers.begin(), numbers.end(), 0.0);
    const std::array columns{Column(std::span<const double>(numbers))};
    std::vector<double> results(numbers.size());
    EXPECT_EQ(Formula::parse(expanded(formula)).evaluateRows(columns, results, {}), 0U);
    EXPECT_EQ(results, numbers) << formula;
}

}  // namespace

// Each of these would need a stack as deep as the text, or time in proportion to its square, if the
// engine recursed over a formula or searched its names one by one.
TEST(HostileInput, OfAMebibyteIsAnsweredWithoutDeepStacks) {
    onSmallStack([] {
        expectExpandedAnswers(
            "{M*(} → 公式嵌套过深！ | {M*-} → 公式嵌套过深！ | {M*Not } → 公式嵌套过深！ | "
            "{M*sin(} → 公式嵌套过深！ | {M*If(1,2,} → 公式嵌套过深！ | {M*2^} → 公式嵌套过深！ | "
            "{M*2^-} → 公式嵌套过深！ | {M*a=(} → 公式嵌套过深！ | {M*foo(} → 公式嵌套过深！ | "
            "{M*StrLen(StrCat('a',} → 公式嵌套过深！ | {M*!} → 公式第1个字符“!”处有语法错误！ | "
            "{M*a,} → 公式第2个字符“,”处有语法错误！ | {M*1,} → 公式第2个字符“,”处有语法错误！ | "
            "{M* } → 公式不完整！ | {M*1+} → 公式不完整！ | {M*a*} → 公式不完整！ | "
            "{M*1 Or Not } → 公式不完整！ | {M*'b'=} → 公式不完整！ | {M*)} → 公式中的括号不匹配！ "
            "| "
            "{M*\xff} → 公式第1个字符“\uFFFD”处有语法错误！ | {M*1e+} → "
            "公式第5个字符“e”处有语法错误！ | "
            "{M*9} → 计算结果超出范围！ | \"{M*\"\"} → 公式中的文本缺少引号！ | 0.{M*0}1 → 0 | "
            "0.{M*0}1e2097152 → 计算结果超出范围！ | 1{M*!} → 1 | {M*1+}1 → 524290 | {M*１×}1 → 1 "
            "| "
            "{M*0 And }1 → 0 | {M*If(0,1/0,0)+}1 → 1 | StrLen(StrCat('a'{M*,'b'})) → 262146 | "
            "{M*x-}x → -1048576 | {M*x+}x → 1048580 | {M*If(x,x/x,0)*}x → 2 | x{M*!} → 2",
            {{"x", 2.0}});
        expectColumnOfX("x{10000*+x-x}");
    });
}

TEST(HostileInput, OfManyVariablesIsAnswered) {
    std::string sum = "0";
    std::string chain = "v7='x'";
    for (int i = 0; i < 100'000; ++i) {
        const std::string name = 'v' + std::to_string(i);
        sum.append("+").append(name);
        chain.append(" Or ").append(name).append("=v").append(std::to_string(i + 1));
    }
    const Formula formula = Formula::parse(sum);
    EXPECT_EQ(formula.variableCount(), 100'000U);
    EXPECT_EQ(formula.indexOf("V99999"), 99'999U);
    EXPECT_EQ(Formula::parse(chain).variable(100'000).type, Type::Text);
}

TEST(HostileInput, MayNestAThousandLevels) {
    onSmallStack([] {
        expectExpandedAnswers(
            "{1000*(}x{1000*)} → 1 | {1001*(}x{1001*)} → 公式嵌套过深！ | {1000*x^}x → 1 | "
            "{1000*StrMismatch('a','a',1,1,}x{1000*)} → 1 | {500*1-(}1{500*)} → 1 | "
            "{500*StrLen(StrSub('ab',1,1,}x{500*))} → 1 | {330*1 And (0 Or }y{330*)} → 0",
            {{"x", 1.0}, {"y", 0.0}});
        for (const char* formula :
             {"{500*0-(}x{500*)}", "{1000*int(}x{1000*)}", "{1000*-}x", "{198*int(}x{198*)}",
              "{500*If(x,}x{500*,x)}", "{1000*If(0,0,}x{1000*)}"}) {
            expectColumnOfX(formula);
        }
    });
}

TEST(HostileInput, CannotMultiplyTextsWithoutEnd) {
    expectExpandedAnswers(
        "{100*StrReplace(}'{1000*a}'{100*,'a','aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa',0,"
        "0)}"
        " → 计算结果超出范围！",
        {});
}

TEST(HostileInput, SearchesInTimeProportionalToTheText) {
    expectAnswers("StrFind(s,t,1) → 0 | s Like t → 0 | StrLen(StrReplace(s,t,s,0,1)) → 1048576",
                  {{"s", repeated("a", 1 << 20)}, {"t", repeated("a", 1 << 19) + "b"}});
}
