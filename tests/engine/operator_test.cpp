#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(Operators, BindAsTightlyAsTheirLevelSays) {
    expectAnswers(
        "(1+2)*3 → 9 | 2*3^2 → 18 | -3! → -6 | 1<2=1 → 1 | Not 0 And 0 → 0 | 0 And 0 Or 1 → 1 | "
        "(1 Or 0) And 0 → 0 | -+-2 → 2 | 6/-+3 → -2 | 2^+3 → 8 | 2^-1^2 → 0.5 | 2^-2*3 → 0.75 | "
        "5/3 → 1.6666666666666667 | (-8)^3 → -512 | (-2)^-1 → -0.5 | 0^2 → 0 | 1 = Not 0 → 1 | "
        "1! → 1 | 25! → 1.5511210043330986e+25 | 170! → 7.257415615307999e+306 | "
        "(-1)! → 阶乘只能用于0到170的整数！");
}

TEST(Operators, RelationsOrderNumbersAndTextsByCodePoint) {
    expectAnswers(
        "1=2 → 0 | 1<>1 → 0 | 2<2 → 0 | 3<=2 → 0 | 3>2 → 1 | 2>2 → 0 | 2>=2 → 1 | 'a'='a' → 1 | "
        "'a'<>'A' → 1 | 'a'<='a' → 1 | 'b'>='c' → 0 | ''<'a' → 1 | '\uFF5E'<'\U00010400' → 1 | "
        "'混凝土C30' Like 'C3' → 1 | 'abc' Like 'B' → 0 | '' Like 'a' → 0 | "
        "'a' like 'a' AND 'a' EQUAL 'a' → 1");
}

TEST(Operators, AnyNumberButZeroIsTrueAndWhatCannotMatterIsLeftOut) {
    expectAnswers(
        "2 And -0.5 → 1 | 0 Or 3 → 1 | 0 Or 0 → 0 | Not Not 7 → 1 | 0 And 1/0 → 0 | "
        "1 Or 1/0 → 1 | 1 And 1/0 → 除数不能为零！ | 0 Or 1/0 → 除数不能为零！ | "
        "0 And 1/0 Or 1 → 1 | If(0.1,2,1/0) → 2 | If(0,1/0,3) → 3 | If(1/0,2,3) → 除数不能为零！ | "
        "If(1,1/0,3) → 除数不能为零！ | If(0,1,If(1,2,3))+10 → 12 | If(1,2,3)*If(0,4,5)+6 → 16");
}
