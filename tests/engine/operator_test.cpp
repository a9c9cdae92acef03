#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(Operators, BindAsTightlyAsTheirLevelSaysAndTakeSigns) {
    expectAnswers({"1+2*3 → 7",        "(1+2)*3 → 9",        "2*3^2 → 18",      "2^3! → 64",
                   "-3! → -6",         "-2^2 → -4",          "(-2)^2 → 4",      "7-2-1 → 4",
                   "24/4/2 → 3",       "24/4*2 → 12",        "1+1=2 → 1",       "1<2=1 → 1",
                   "3>2>1 → 0",        "Not 1=2 → 1",        "Not 0 And 0 → 0", "1 Or 0 And 0 → 1",
                   "0 And 0 Or 1 → 1", "(1 Or 0) And 0 → 0", "2*-3 → -6",       "--2 → 2",
                   "-+-2 → 2",         "1--1 → 2",           "6/-+3 → -2"});
}

TEST(Operators, PowerGroupsFromTheRightAndTakesASignedExponent) {
    expectAnswers({"2^3^2 → 512", "2^-3 → 0.125", "2^+3 → 8", "2^-1^2 → 0.5", "2^-2*3 → 0.75",
                   "4^0.5 → 2", "(-8)^3 → -512", "(-2)^-1 → -0.5", "0^0 → 1", "0^2 → 0"});
}

TEST(Operators, FactorialTakesWholeNumbersUpTo170) {
    expectAnswers({"0! → 1", "1! → 1", "5! → 120", "20! → 2432902008176640000",
                   "25! → 1.5511210043330986e+25", "100! → 9.332621544394415e+157",
                   "170! → 7.257415615307999e+306", "3!! → 720", "(1+2)! → 6",
                   "171! → 阶乘只能用于0到170的整数！", "(-1)! → 阶乘只能用于0到170的整数！",
                   "1.5! → 阶乘只能用于0到170的整数！"});
}

TEST(Operators, RelationsOrderNumbers) {
    expectAnswers({"1=1 → 1", "1=2 → 0", "1<>2 → 1", "1<>1 → 0", "1<2 → 1", "2<2 → 0", "2<=2 → 1",
                   "3<=2 → 0", "3>2 → 1", "2>2 → 0", "2>=2 → 1", "1>=2 → 0", "0.1+0.2=0.3 → 0"});
}

TEST(Operators, RelationsOrderTextsByCodePoint) {
    expectAnswers({"'a'='a' → 1", "'a'='A' → 0", "'a'<>'A' → 1", "'Z'<'a' → 1", "'ab'>'a' → 1",
                   "'a'<='a' → 1", "'b'>='c' → 0", "''<'a' → 1", "'\uFF5E'<'\U00010400' → 1"});
}

TEST(Operators, LikeFindsATextInAnotherAndEqualComparesThem) {
    expectAnswers({"'混凝土C30' Like 'C3' → 1", "'abc' Like 'B' → 0", "'abc' Like '' → 1",
                   "'' Like 'a' → 0", "'abc' Equal 'abc' → 1", "'abc' Equal 'ABC' → 0",
                   "'a' like 'a' AND 'a' EQUAL 'a' → 1"});
}

TEST(Operators, AnyNumberButZeroIsTrue) {
    expectAnswers({"2 And -0.5 → 1", "2 And 0 → 0", "0 Or 3 → 1", "0 Or 0 → 0", "Not 5 → 0",
                   "Not 0 → 1", "Not Not 7 → 1", "Not(0) → 1", "1+Not 0 → 2", "1 = Not 0 → 1"});
}

TEST(Operators, AndAndOrLeaveOutWhatCannotMatter) {
    expectAnswers({"x<>0 And 1/x>0 → 0", "x=0 Or 1/x>2 → 1"}, {{"x", 0.0}});
    expectAnswers({"x<>0 And 1/x>0 → 1", "x=0 Or 1/x>2 → 0"}, {{"x", 1.0}});
    expectAnswers({"0 And 1/0 → 0", "1 Or 1/0 → 1", "1 And 1/0 → 除数不能为零！",
                   "0 Or 1/0 → 除数不能为零！", "0 And 1/0 Or 1 → 1"});
}

TEST(Operators, MeanTheSameWithVariablesAsWithConstants) {
    // A formula of constants is worked out while it is parsed, one of variables when it is
    // evaluated.
    expectAnswers({"a+b*d → 17",
                   "a-b-d → -6",
                   "-a^a → -4",
                   "d/a → 2.5",
                   "b! → 6",
                   "a^b^a → 512",
                   "a=b → 0",
                   "a<>b → 1",
                   "a<b → 1",
                   "a<=a → 1",
                   "a>b → 0",
                   "b>=d → 0",
                   "Not c → 1",
                   "a And c → 0",
                   "a And b → 1",
                   "c Or d → 1",
                   "c Or c → 0",
                   "c And a/c → 0",
                   "If(c,a,b) → 3",
                   "If(a,b,c) → 3",
                   "d/c → 除数不能为零！",
                   "If(c,d/c,If(a,b,d/c)) → 3",
                   "mod(d,a) → 1",
                   "+a → 2"},
                  {{"a", 2.0}, {"b", 3.0}, {"c", 0.0}, {"d", 5.0}});
}
