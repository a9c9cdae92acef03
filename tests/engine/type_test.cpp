#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(Types, OfVariablesFollowFromTheirUse) {
    expectVariables(
        "a → a | StrLen(a)+b → a:text b | a='x' → a:text | 'x'>=a → a:text | "
        "a Like b → a:text b:text | a Equal b → a:text b:text | a=b → a b | "
        "If(c,a,'x') → c a:text | If(c,'x',a) → c a:text | If(c,a,b) → c a b | If(c,a,2) → c a | "
        "StrSub(s,i,n,r) → s:text i n r | R2S(x,n) → x n | Not a And b Or c → a b c | -a → a | "
        "a! → a");
}

TEST(Types, TravelThroughRelationsAndBranches) {
    expectVariables(
        "a=b And b='x' → a:text b:text | StrLen(If(c,a,b)) → c a:text b:text | "
        "a=b And b=c And c=d And StrLen(d) → a:text b:text c:text d:text | "
        "If(c,a,b)='x' → c a:text b:text | If(c,a,b)+1 → c a b | "
        "If(c,If(c,a,b),d)=e And e Like 'x' → c a:text b:text d:text e:text | "
        "a=b And c=d And a=c And StrTrimS(d)='' → a:text b:text c:text d:text");
}

TEST(Types, TheFirstUseDecidesAndALaterOneIsTheError) {
    expectAnswers(
        "a='x' And sin(a) → 函数“sin”的第1参量只能被赋予数值型参数。 | "
        "sin(a) And a='x' → 运算符“=”两边的类型不同！ | "
        "a=b And sin(a) And StrLen(b) → 函数“StrLen”的第1参量只能被赋予文本型参数。 | "
        "If(a Like 'x',a,1) → 函数“If”的第3参量只能被赋予文本型参数。 | "
        "If(1,a+1,'x') → 函数“If”的第3参量只能被赋予数值型参数。");
}

TEST(Types, OfTheResultFollowFromTheFormula) {
    for (const auto& [formula, type] :
         rowsOf("1+1 → n | a → n | 'a'='b' → n | StrLen(a) → n | 1+ → n | 'a' → t | "
                "Left(a,1) → t | If(c,a,'x') → t | If(StrLen(a),a,b) → t")) {
        using varo::engine::Type;
        EXPECT_EQ(varo::engine::Formula::parse(formula).resultType(),
                  type == "t" ? Type::Text : Type::Number)
            << formula;
    }
}
