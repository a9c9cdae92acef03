#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(Errors, ACharacterThatCannotStandThereIsNamedWithItsPosition) {
    expectErrors(
        {"1+▸*2 → 公式第3个字符“*”处有语法错误！",    "弯矩+▸＊2 → 公式第4个字符“＊”处有语法错误！",
         "▸@ → 公式第1个字符“@”处有语法错误！",       "a▸$b → 公式第2个字符“$”处有语法错误！",
         "2▸a → 公式第2个字符“a”处有语法错误！",      "2▸(3) → 公式第2个字符“(”处有语法错误！",
         "(1)▸(2) → 公式第4个字符“(”处有语法错误！",  "a ▸\"b\" → 公式第3个字符“\"”处有语法错误！",
         "1▸,2 → 公式第2个字符“,”处有语法错误！",     "(1▸,2) → 公式第3个字符“,”处有语法错误！",
         "(▸) → 公式第2个字符“)”处有语法错误！",      "(▸)! → 公式第2个字符“)”处有语法错误！",
         "(1+▸) → 公式第4个字符“)”处有语法错误！",    "sin(▸,1) → 公式第5个字符“,”处有语法错误！",
         "mod(1,▸) → 公式第7个字符“)”处有语法错误！", "1.2▸.3 → 公式第4个字符“.”处有语法错误！",
         "▸. → 公式第1个字符“.”处有语法错误！",       "1▸e → 公式第2个字符“e”处有语法错误！",
         "1=▸=1 → 公式第3个字符“=”处有语法错误！",    "1=▸<1 → 公式第3个字符“<”处有语法错误！",
         "a ▸Not b → 公式第3个字符“N”处有语法错误！", "▸And 1 → 公式第1个字符“A”处有语法错误！",
         "▸^2 → 公式第1个字符“^”处有语法错误！",      "▸! → 公式第1个字符“!”处有语法错误！"});
}

TEST(Errors, TheShapeOfAFormulaIsChecked) {
    expectErrors({"▸ → 公式不完整！", "   ▸ → 公式不完整！", "a+b*▸ → 公式不完整！",
                  "(▸ → 公式不完整！", "sin(▸ → 公式不完整！", "mod(1,▸ → 公式不完整！",
                  "Not▸ → 公式不完整！", "(1+2▸ → 公式中的括号不匹配！",
                  "sin(1▸ → 公式中的括号不匹配！", "1+2▸) → 公式中的括号不匹配！",
                  "▸) → 公式中的括号不匹配！", "1+▸) → 公式中的括号不匹配！",
                  "▸\"abc → 公式中的文本缺少引号！", "1+▸'abc\" → 公式中的文本缺少引号！",
                  "▸“abc → 公式中的文本缺少引号！", "▸'a'' → 公式中的文本缺少引号！"});
}

TEST(Errors, CallsAreChecked) {
    expectErrors({"1+▸foo(2) → 没有函数“foo”！", "▸Ｆoo (2) → 没有函数“Foo”！",
                  "▸exp(1) → 没有函数“exp”！", "▸Result(1) → 没有函数“Result”！",
                  "▸sin() → 函数“sin”的参数不足。", "2*▸MOD(1) → 函数“mod”的参数不足。",
                  "▸strcat('a') → 函数“StrCat”的参数不足。", "▸If(1,2) → 函数“If”的参数不足。",
                  "▸SIN(1,2) → 函数“sin”的参数过多！", "▸If(1,2,3,4) → 函数“If”的参数过多！",
                  "▸sin('a') → 函数“sin”的第1参量只能被赋予数值型参数。",
                  "▸StrLen(1) → 函数“StrLen”的第1参量只能被赋予文本型参数。",
                  "▸StrFind('a','b','c') → 函数“StrFind”的第3参量只能被赋予数值型参数。",
                  "▸StrCat('a','b',3) → 函数“StrCat”的第3参量只能被赋予文本型参数。",
                  "▸If('a',1,2) → 函数“If”的第1参量只能被赋予数值型参数。"});
}

TEST(Errors, OperandsAreChecked) {
    expectErrors(
        {"1▸+'a' → 运算符“+”不能用于文本！", "'a'▸-1 → 运算符“-”不能用于文本！",
         "'a'▸*'b' → 运算符“*”不能用于文本！", "1▸/'a' → 运算符“/”不能用于文本！",
         "2▸^'a' → 运算符“^”不能用于文本！", "'a'▸! → 运算符“!”不能用于文本！",
         "▸-'a' → 运算符“-”不能用于文本！", "▸not 'a' → 运算符“Not”不能用于文本！",
         "1 ▸and 'a' → 运算符“And”不能用于文本！", "'a' ▸Or 1 → 运算符“Or”不能用于文本！",
         "1 ▸Like 2 → 运算符“Like”不能用于文本！", "1▸='a' → 运算符“=”两边的类型不同！",
         "'a'▸≠1 → 运算符“<>”两边的类型不同！", "'a'▸<=1 → 运算符“<=”两边的类型不同！",
         "a ▸Like 1 → 运算符“Like”两边的类型不同！", "1 ▸Equal 'a' → 运算符“Equal”两边的类型不同！",
         "1=1▸='a' → 运算符“=”两边的类型不同！", "1+▸Result → 公式不能使用输出变量“Result”！",
         "▸rEsUlT → 公式不能使用输出变量“Result”！"});
}

TEST(Errors, TheFirstOneInReadingOrderIsReportedAndSyntaxBeforeMeaning) {
    expectErrors({"▸sin('a')+foo(1) → 函数“sin”的第1参量只能被赋予数值型参数。",
                  "▸foo(sin('a')) → 没有函数“foo”！",
                  "▸Result+foo(1) → 公式不能使用输出变量“Result”！",
                  "▸sin('a',1) → 函数“sin”的第1参量只能被赋予数值型参数。",
                  "foo(1)+▸ → 公式不完整！", "1+▸*2+*3 → 公式第3个字符“*”处有语法错误！"});
}

TEST(Errors, AVariableWithoutAValueIsNamed) {
    expectAnswers(
        {"a+Fy → 变量“Fy”没有值！", "StrLen(s) → 变量“s”没有值！", "t+1 → 变量“t”没有值！"},
        {{"a", 1.0}, {"s", 1.0}, {"t", "x"}});
}

TEST(Errors, InsideAnOperationWhoseResultWouldHideThemAreTold) {
    expectAnswers({"exp^ln(z) → 函数“ln”的参数超出范围！", "exp^(-1/z) → 除数不能为零！",
                   "1+exp^(-1/z^2) → 除数不能为零！", "exp^(-h*1e300) → 计算结果超出范围！",
                   "1/(h*1e300) → 计算结果超出范围！", "arctan(h*h) → 计算结果超出范围！",
                   "h*h>1 → 计算结果超出范围！", "Not (h*h) → 计算结果超出范围！",
                   "If(h*h,1,2) → 计算结果超出范围！", "2^(0-h*h) → 计算结果超出范围！",
                   "preci(1,h*h) → 计算结果超出范围！", "exp^ln(0) → 函数“ln”的参数超出范围！"},
                  {{"z", 0.0}, {"h", 1e200}});
}

TEST(Errors, LeaveTheListOfVariablesComplete) {
    expectVariables({"a+b* → a b", "a+*b+c)+d → a b c d", "@a,b;c → a b c", "StrLen(a → a:text",
                     "StrFind(a,b, → a:text b:text", "foo(a,b)+Result+c → a b c",
                     "sin(a,b,c) → a b c", "a+'b+c → a"});
    EXPECT_EQ(variables(repeated("(", 2000) + "a"), "a");
}
