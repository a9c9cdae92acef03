#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(NumberFunctions, ComeToTheValuesOfTheirDefinition) {
    // The last digit is left to the mathematics library.
    const Rows rows = {"sin(0.5) → 0.479425538604203",
                       "cos(0.5) → 0.8775825618903728",
                       "tan(0.5) → 0.5463024898437905",
                       "sin(pi/2) → 1",
                       "arcsin(1) → 1.5707963267948966",
                       "arcsin(-1) → -1.5707963267948966",
                       "arccos(-1) → 3.141592653589793",
                       "arccos(1) → 0",
                       "arctan(1) → 0.7853981633974483",
                       "arctan(-1e300) → -1.5707963267948966",
                       "arcctan(1) → 0.7853981633974483",
                       "arcctan(-1) → 2.356194490192345",
                       "arcctan(0) → 1.5707963267948966",
                       "ctan(1e10) → 1e-10",
                       "sqrt(2) → 1.4142135623730951",
                       "sqrt(0) → 0",
                       "ln(10) → 2.302585092994046",
                       "ln(exp) → 1",
                       "log(1000) → 3",
                       "log(0.01) → -2",
                       "exp^2 → 7.38905609893065",
                       "pi*2 → 6.283185307179586"};
    for (const std::string_view row : rows) {
        const auto [formula, text] = sidesOf(row);
        const double expected = number(text);
        EXPECT_DOUBLE_EQ(number(formula), expected) << row;
        EXPECT_DOUBLE_EQ(number(std::string(formula) + "+x", {{"x", 0.0}}), expected) << row;
    }
}

TEST(NumberFunctions, RejectArgumentsOutsideTheirDomain) {
    expectAnswers({"arcsin(1.001) → 函数“arcsin”的参数超出范围！",
                   "ARCCOS(-2) → 函数“arccos”的参数超出范围！",
                   "sqrt(-1) → 函数“sqrt”的参数超出范围！", "ln(0) → 函数“ln”的参数超出范围！",
                   "ln(-1) → 函数“ln”的参数超出范围！", "log(0) → 函数“log”的参数超出范围！",
                   "mod(1,0) → 除数不能为零！"});
}

TEST(NumberFunctions, IntAndDeciSplitANumberTowardsZeroInAnyLetterCase) {
    expectAnswers({"int(2.7) → 2", "int(-2.7) → -2", "int(5) → 5", "deci(2.75) → 0.75",
                   "deci(-2.75) → -0.75", "Deci(3) → 0", "INT(0.5) → 0"});
}

TEST(NumberFunctions, ModLeavesTheRestWithTheSignOfTheDividend) {
    expectAnswers({"mod(7,3) → 1", "mod(-7,3) → -1", "mod(7,-3) → 1", "mod(5.5,2) → 1.5",
                   "mod(1,0.1) → 0", "mod(6,3) → 0", "mod(1e20,3) → 1", "mod(1e308,1e-10)>=0 → 1"});
}

TEST(NumberFunctions, PreciRoundsHalvesAwayFromZeroAsTheNumberIsWritten) {
    expectAnswers({"preci(2.675,2) → 2.68", "preci(-2.675,2) → -2.68", "preci(1.005,2) → 1.01",
                   "preci(2.674999,2) → 2.67", "preci(0.5,0) → 1", "preci(-0.5,0) → -1",
                   "preci(0.49,0) → 0", "preci(9.999,2) → 10", "preci(1250,-2) → 1300",
                   "preci(1249,-2) → 1200", "preci(49,-2) → 0", "preci(50,-2) → 100",
                   "preci(12.345,1.9) → 12.3", "preci(0.1+0.2,15) → 0.3", "preci(1.5,1e9) → 1.5",
                   "preci(1.5,-1e9) → 0", "preci(0,3) → 0", "preci(1.5e300,2) → 1.5e+300"});
}

TEST(NumberFunctions, ResultsThatNoDoubleHoldsAreErrors) {
    expectAnswers({"10^308*10 → 计算结果超出范围！", "10^400 → 计算结果超出范围！",
                   "1e308+1e308 → 计算结果超出范围！", "-1e308-1e308 → 计算结果超出范围！",
                   "1e308/0.1 → 计算结果超出范围！", "1e999 → 计算结果超出范围！",
                   "1/(1e308*10) → 计算结果超出范围！", "If(1e999,1,2) → 计算结果超出范围！",
                   "1e-999 → 0", "1e-200*1e-200 → 0", "(-8)^(1/3) → 乘方的结果不是实数！",
                   "0^-1 → 乘方的结果不是实数！", "1/0 → 除数不能为零！", "0/0 → 除数不能为零！"});
}

TEST(If, EvaluatesOnlyTheChosenBranch) {
    expectAnswers({"If(1,2,3) → 2", "If(0,2,3) → 3", "If(0.1,2,1/0) → 2", "If(0,1/0,3) → 3",
                   "If(1/0,2,3) → 除数不能为零！", "If(1,1/0,3) → 除数不能为零！",
                   "If(1,'a','b') → 'a'", "If(0,1,If(1,2,3))+10 → 12",
                   "If(1,2,3)*If(0,4,5)+6 → 16"});
    expectAnswers({"If(x>1,1/(x-1),x) → 1", "StrCat(If(x>1,'大','小'),'!') → '小!'"}, {{"x", 1.0}});
    expectAnswers({"If(x>1,1/(x-1),x) → 0.5", "StrCat(If(x>1,'大','小'),'!') → '大!'"},
                  {{"x", 3.0}});
}
