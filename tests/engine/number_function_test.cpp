// The values of the functions themselves are compared in accuracy_test.cpp.

#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(NumberFunctions, RejectArgumentsOutsideTheirDomain) {
    expectAnswers(
        "arcsin(1.001) → 函数“arcsin”的参数超出范围！ | ARCCOS(-2) → 函数“arccos”的参数超出范围！ "
        "| "
        "ln(-1) → 函数“ln”的参数超出范围！ | log(0) → 函数“log”的参数超出范围！ | "
        "sqrt(x) → 函数“sqrt”的参数超出范围！ | mod(1,x-x) → 除数不能为零！",
        {{"x", -1.0}});
}

TEST(NumberFunctions, CutTowardsZeroAndRoundHalvesAwayFromItAsTheNumberIsWritten) {
    expectAnswers(
        "int(5) → 5 | Deci(3) → 0 | INT(0.5) → 0 | mod(1,0.1) → 0 | mod(6,3) → 0 | "
        "mod(1e20,3) → 1 | mod(1e308,1e-10)>=0 → 1 | "
        "preci(-2.675,2) → -2.68 | preci(1.005,2) → 1.01 | preci(2.674999,2) → 2.67 | "
        "preci(0.5,0) → 1 | preci(-0.5,0) → -1 | preci(0.49,0) → 0 | preci(9.999,2) → 10 | "
        "preci(1249,-2) → 1200 | preci(49,-2) → 0 | preci(50,-2) → 100 | preci(12.345,1.9) → 12.3 "
        "| "
        "preci(0.1+0.2,15) → 0.3 | preci(1.5,1e9) → 1.5 | preci(1.5,-1e9) → 0 | preci(0,3) → 0 | "
        "preci(1.5e300,2) → 1.5e+300 | preci(-1250,-2) → -1300");
}

TEST(NumberFunctions, ResultsThatNoDoubleHoldsAreErrors) {
    expectAnswers(
        "10^400 → 计算结果超出范围！ | 1e308+1e308 → 计算结果超出范围！ | "
        "-1e308-1e308 → 计算结果超出范围！ | 1e308/0.1 → 计算结果超出范围！ | "
        "1e999 → 计算结果超出范围！ | 1/(1e308*10) → 计算结果超出范围！ | "
        "If(1e999,1,2) → 计算结果超出范围！ | 1e-200*1e-200 → 0 | 0/0 → 除数不能为零！");
}

TEST(NumberFunctions, AnErrorInsideAnOperationWhoseResultWouldHideItIsTold) {
    expectAnswers(
        "exp^ln(z) → 函数“ln”的参数超出范围！ | exp^(-1/z) → 除数不能为零！ | "
        "1+exp^(-1/z^2) → 除数不能为零！ | exp^(-h*1e300) → 计算结果超出范围！ | "
        "1/(h*1e300) → 计算结果超出范围！ | arctan(h*h) → 计算结果超出范围！ | "
        "h*h>1 → 计算结果超出范围！ | Not (h*h) → 计算结果超出范围！ | "
        "If(h*h,1,2) → 计算结果超出范围！ | 2^(0-h*h) → 计算结果超出范围！ | "
        "preci(1,h*h) → 计算结果超出范围！ | exp^ln(0) → 函数“ln”的参数超出范围！",
        {{"z", 0.0}, {"h", 1e200}});
}
