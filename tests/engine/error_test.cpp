#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(Errors, ACharacterThatCannotStandThereIsNamedWithItsPosition) {
    expectErrors(
        "公式第#个字符“%”处有语法错误！",
        "1+▸*2 → * | 弯矩+▸＊2 → ＊ | ▸@ → @ | a▸$b → $ | 2▸a → a | 2▸(3) → ( | (1)▸(2) → ( | "
        "a ▸\"b\" → \" | 1▸,2 → , | (1▸,2) → , | (▸) → ) | (▸)! → ) | (1+▸) → ) | sin(▸,1) → , | "
        "mod(1,▸) → ) | 1.2▸.3 → . | ▸. → . | 1▸e → e | 1=▸=1 → = | 1=▸<1 → < | a ▸Not b → N | "
        "▸And 1 → A | ▸^2 → ^ | ▸! → ! | 1+▸*2+*3 → * | ▸₁a → ₁ | x▸² → ²");
}

TEST(Errors, TheShapeOfAFormulaIsChecked) {
    expectErrors(
        "公式%！",
        "▸ → 不完整 |    ▸ → 不完整 | a+b*▸ → 不完整 | (▸ → 不完整 | sin(▸ → 不完整 | "
        "mod(1,▸ → 不完整 | Not▸ → 不完整 | foo(1)+▸ → 不完整 | (1+2▸ → 中的括号不匹配 | "
        "sin(1▸ → 中的括号不匹配 | ▸) → 中的括号不匹配 | 1+2▸) → 中的括号不匹配 | "
        "1+▸) → 中的括号不匹配 | ▸\"abc → 中的文本缺少引号 | 1+▸'abc\" → 中的文本缺少引号 | "
        "▸“abc → 中的文本缺少引号 | ▸'a'' → 中的文本缺少引号 | "
        "▸rEsUlT → 不能使用输出变量“Result” | ▸Result+foo(1) → 不能使用输出变量“Result”");
}

TEST(Errors, CallsAreChecked) {
    expectErrors("没有函数“%”！",
                 "1+▸foo(2) → foo | ▸Ｆoo (2) → Foo | ▸exp(1) → exp | ▸Result(1) → Result | "
                 "▸foo(sin('a')) → foo");
    expectErrors("函数“%”的参数不足。",
                 "▸sin() → sin | 2*▸MOD(1) → mod | ▸strcat('a') → StrCat | ▸If(1,2) → If");
    expectErrors("函数“%”的参数过多！", "▸SIN(1,2) → sin | ▸If(1,2,3,4) → If");
    expectErrors(
        "函数“%参量只能被赋予数值型参数。",
        "▸sin('a') → sin”的第1 | ▸StrFind('a','b','c') → StrFind”的第3 | "
        "▸If('a',1,2) → If”的第1 | ▸sin('a')+foo(1) → sin”的第1 | ▸sin('a',1) → sin”的第1");
    expectErrors("函数“%参量只能被赋予文本型参数。",
                 "▸StrLen(1) → StrLen”的第1 | ▸StrCat('a','b',3) → StrCat”的第3");
}

TEST(Errors, OperandsAreChecked) {
    expectErrors(
        "运算符“%”不能用于文本！",
        "1▸+'a' → + | 'a'▸-1 → - | 'a'▸*'b' → * | 1▸/'a' → / | 2▸^'a' → ^ | 'a'▸! → ! | "
        "▸-'a' → - | ▸not 'a' → Not | 1 ▸and 'a' → And | 'a' ▸Or 1 → Or | 1 ▸Like 2 → Like");
    expectErrors(
        "运算符“%”两边的类型不同！",
        "1▸='a' → = | 'a'▸≠1 → <> | 'a'▸<=1 → <= | a ▸Like 1 → Like | 1 ▸Equal 'a' → Equal | "
        "1=1▸='a' → =");
}

TEST(Errors, LeaveTheListOfVariablesComplete) {
    expectVariables(
        "a+b* → a b | a+*b+c)+d → a b c d | @a,b;c → a b c | StrLen(a → a:text | "
        "StrFind(a,b, → a:text b:text | foo(a,b)+Result+c → a b c | sin(a,b,c) → a b c | "
        "a+'b+c → a | " +
        repeated("(", 2000) + "a → a");
}
