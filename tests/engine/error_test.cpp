#include "engine/error.h"

#include "engine/calculation.h"
#include "engine/formula.h"

#include <gtest/gtest.h>
#include <string_view>

namespace {

struct Case {
    std::string_view formula;
    std::string_view message;
    std::uint32_t position;
};

void expectAll(std::initializer_list<Case> cases) {
    for (const Case& c : cases) {
        const varo::engine::Formula formula = varo::engine::Formula::parse(c.formula);
        EXPECT_FALSE(formula.isValid()) << c.formula;
        EXPECT_EQ(formula.error().text(), c.message) << c.formula;
        EXPECT_EQ(formula.error().position, c.position) << c.formula;
        EXPECT_EQ(answer(c.formula), c.message) << c.formula;
    }
}

}  // namespace

TEST(Errors, ACharacterThatCannotStandThereIsNamedWithItsPosition) {
    expectAll({
        {"1+*2", "公式第3个字符“*”处有语法错误！", 3},
        {"弯矩+＊2", "公式第4个字符“＊”处有语法错误！", 4},
        {"@", "公式第1个字符“@”处有语法错误！", 1},
        {"a$b", "公式第2个字符“$”处有语法错误！", 2},
        {"2a", "公式第2个字符“a”处有语法错误！", 2},
        {"2(3)", "公式第2个字符“(”处有语法错误！", 2},
        {"(1)(2)", "公式第4个字符“(”处有语法错误！", 4},
        {"a \"b\"", "公式第3个字符“\"”处有语法错误！", 3},
        {"1,2", "公式第2个字符“,”处有语法错误！", 2},
        {"(1,2)", "公式第3个字符“,”处有语法错误！", 3},
        {"()", "公式第2个字符“)”处有语法错误！", 2},
        {"()!", "公式第2个字符“)”处有语法错误！", 2},
        {"(1+)", "公式第4个字符“)”处有语法错误！", 4},
        {"sin(,1)", "公式第5个字符“,”处有语法错误！", 5},
        {"mod(1,)", "公式第7个字符“)”处有语法错误！", 7},
        {"1.2.3", "公式第4个字符“.”处有语法错误！", 4},
        {".", "公式第1个字符“.”处有语法错误！", 1},
        {"1e", "公式第2个字符“e”处有语法错误！", 2},
        {"1==1", "公式第3个字符“=”处有语法错误！", 3},
        {"1=<1", "公式第3个字符“<”处有语法错误！", 3},
        {"a Not b", "公式第3个字符“N”处有语法错误！", 3},
        {"And 1", "公式第1个字符“A”处有语法错误！", 1},
        {"^2", "公式第1个字符“^”处有语法错误！", 1},
        {"!", "公式第1个字符“!”处有语法错误！", 1},
    });
}

TEST(Errors, TheShapeOfAFormulaIsChecked) {
    expectAll({
        {"", "公式不完整！", 1},
        {"   ", "公式不完整！", 4},
        {"a+b*", "公式不完整！", 5},
        {"(", "公式不完整！", 2},
        {"sin(", "公式不完整！", 5},
        {"mod(1,", "公式不完整！", 7},
        {"Not", "公式不完整！", 4},
        {"(1+2", "公式中的括号不匹配！", 5},
        {"sin(1", "公式中的括号不匹配！", 6},
        {"1+2)", "公式中的括号不匹配！", 4},
        {")", "公式中的括号不匹配！", 1},
        {"1+)", "公式中的括号不匹配！", 3},
        {"\"abc", "公式中的文本缺少引号！", 1},
        {"1+'abc\"", "公式中的文本缺少引号！", 3},
        {"“abc", "公式中的文本缺少引号！", 1},
        {"\"a\"\"", "公式中的文本缺少引号！", 1},
    });
}

TEST(Errors, CallsAreChecked) {
    expectAll({
        {"1+foo(2)", "没有函数“foo”！", 3},
        {"Ｆoo (2)", "没有函数“Foo”！", 1},
        {"exp(1)", "没有函数“exp”！", 1},
        {"Result(1)", "没有函数“Result”！", 1},
        {"sin()", "函数“sin”的参数不足。", 1},
        {"2*MOD(1)", "函数“mod”的参数不足。", 3},
        {"strcat(\"a\")", "函数“StrCat”的参数不足。", 1},
        {"If(1,2)", "函数“If”的参数不足。", 1},
        {"SIN(1,2)", "函数“sin”的参数过多！", 1},
        {"If(1,2,3,4)", "函数“If”的参数过多！", 1},
        {"sin(\"a\")", "函数“sin”的第1参量只能被赋予数值型参数。", 1},
        {"StrLen(1)", "函数“StrLen”的第1参量只能被赋予文本型参数。", 1},
        {"StrFind(\"a\",\"b\",\"c\")", "函数“StrFind”的第3参量只能被赋予数值型参数。", 1},
        {"StrCat(\"a\",\"b\",3)", "函数“StrCat”的第3参量只能被赋予文本型参数。", 1},
        {"If(\"a\",1,2)", "函数“If”的第1参量只能被赋予数值型参数。", 1},
    });
}

TEST(Errors, OperandsAreChecked) {
    expectAll({
        {"1+\"a\"", "运算符“+”不能用于文本！", 2},
        {"\"a\"-1", "运算符“-”不能用于文本！", 4},
        {"\"a\"*\"b\"", "运算符“*”不能用于文本！", 4},
        {"1/\"a\"", "运算符“/”不能用于文本！", 2},
        {"2^\"a\"", "运算符“^”不能用于文本！", 2},
        {"\"a\"!", "运算符“!”不能用于文本！", 4},
        {"-\"a\"", "运算符“-”不能用于文本！", 1},
        {"not \"a\"", "运算符“Not”不能用于文本！", 1},
        {"1 and \"a\"", "运算符“And”不能用于文本！", 3},
        {"\"a\" Or 1", "运算符“Or”不能用于文本！", 5},
        {"1 Like 2", "运算符“Like”不能用于文本！", 3},
        {"1=\"a\"", "运算符“=”两边的类型不同！", 2},
        {"\"a\"≠1", "运算符“<>”两边的类型不同！", 4},
        {"\"a\"<=1", "运算符“<=”两边的类型不同！", 4},
        {"a Like 1", "运算符“Like”两边的类型不同！", 3},
        {"1 Equal \"a\"", "运算符“Equal”两边的类型不同！", 3},
        {"1=1=\"a\"", "运算符“=”两边的类型不同！", 4},
        {"1+Result", "公式不能使用输出变量“Result”！", 3},
        {"rEsUlT", "公式不能使用输出变量“Result”！", 1},
    });
}

TEST(Errors, TheFirstOneInReadingOrderIsReportedAndSyntaxBeforeMeaning) {
    expectAll({
        {"sin(\"a\")+foo(1)", "函数“sin”的第1参量只能被赋予数值型参数。", 1},
        {"foo(sin(\"a\"))", "没有函数“foo”！", 1},
        {"Result+foo(1)", "公式不能使用输出变量“Result”！", 1},
        {"sin(\"a\",1)", "函数“sin”的第1参量只能被赋予数值型参数。", 1},
        {"foo(1)+", "公式不完整！", 8},
        {"1+*2+*3", "公式第3个字符“*”处有语法错误！", 3},
    });
}

TEST(Errors, AVariableWithoutAValueIsNamed) {
    EXPECT_EQ(answer("a+Fy", {{"a", 1.0}}), "变量“Fy”没有值！");
    EXPECT_EQ(answer("StrLen(s)", {{"s", 1.0}}), "变量“s”没有值！");
    EXPECT_EQ(answer("a+1", {{"a", "x"}}), "变量“a”没有值！");
}

TEST(Errors, LeaveTheListOfVariablesComplete) {
    EXPECT_EQ(variables("a+b*"), "a:number b:number");
    EXPECT_EQ(variables("a+*b+c)+d"), "a:number b:number c:number d:number");
    EXPECT_EQ(variables("@a,b;c"), "a:number b:number c:number");
    EXPECT_EQ(variables("StrLen(a"), "a:text");
    EXPECT_EQ(variables("StrFind(a,b,"), "a:text b:text");
    EXPECT_EQ(variables("foo(a,b)+Result+c"), "a:number b:number c:number");
    EXPECT_EQ(variables("sin(a,b,c)"), "a:number b:number c:number");
    EXPECT_EQ(variables("a+'b+c"), "a:number");
    EXPECT_EQ(variables(repeated("(", 2000) + "a"), "a:number");
}
