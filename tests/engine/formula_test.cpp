#include "engine/formula.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

using namespace varo::engine;

TEST(Formula, EvaluatesAgainWithOtherValuesAndNumbersFromAnArray) {
    const Formula formula = Formula::parse("q*L^2/c");
    Values values(formula);
    ASSERT_TRUE(values.set("q", 10.0) && values.set("C", 8.0));
    Value result;
    Error error;
    for (const double length : {4.0, 6.0}) {
        ASSERT_TRUE(values.set("l", length));
        ASSERT_TRUE(formula.evaluate(values, result, error));
        EXPECT_DOUBLE_EQ(std::get<double>(result), 10 * length * length / 8);
    }
    double number = 0;
    EXPECT_TRUE(formula.evaluate(std::array{10.0, 6.0, 8.0}, number, error));
    EXPECT_EQ(number, 45);
    EXPECT_FALSE(formula.evaluate(std::array{10.0, 6.0, 0.0}, number, error));
    EXPECT_EQ(error.code, ErrorCode::DivisionByZero);
    EXPECT_EQ(number, 45);
    EXPECT_TRUE(std::signbit(Formula::parse("-a")(std::array{0.0})));
}

TEST(Formula, TellsWhyAnArrayOfNumbersGivesNoNumber) {
    const std::pair<const char*, const char*> cases[] = {{"a+b", "变量“b”没有值！"},
                                                         {"StrLen(s)+a", "变量“s”没有值！"},
                                                         {"R2S(x,1)", "文本“2.0”不能转换成数值！"}};
    for (const auto& [text, message] : cases) {
        const Formula formula = Formula::parse(text);
        double result = 7;
        Error error;
        EXPECT_FALSE(formula.evaluate(std::array{2.0}, result, error));
        EXPECT_EQ(error.text(), message);
        EXPECT_TRUE(std::isnan(formula(std::array{2.0})));
        EXPECT_EQ(formula.evaluateRows(std::array{Column(2.0)}, {&result, 1}, {}), 1U);
    }
}

TEST(Formula, EvaluatesRowsIntoAColumnOfTheirOwn) {
    std::vector<double> numbers(600, 2.0);
    numbers[1] = 0;
    numbers[300] = -1;
    numbers[599] = std::numeric_limits<double>::quiet_NaN();
    const std::array columns{Column(std::span<const double>(numbers))};
    std::vector<ErrorCode> status(numbers.size());
    const Formula formula = Formula::parse("If(a<0 Or a>0, ln(a)/a, 1/a)");
    EXPECT_EQ(formula.evaluateRows(columns, numbers, status), 3U);
    EXPECT_EQ(status[1], ErrorCode::DivisionByZero);
    EXPECT_EQ(status[300], ErrorCode::OutsideDomain);
    EXPECT_EQ(status[599], ErrorCode::NoValue);
    EXPECT_EQ(numbers[598], std::log(2.0) / 2);
}

TEST(Formula, IsParsedAndEvaluatedByThreadsAtOnce) {
    const Formula shared = Formula::parse("x!+StrLen(R2S(x,2))");
    std::array<double, 2> sums{};
    const auto work = [&shared](double& sum) {
        for (int i = 0; i < 1000; ++i) {
            double value = 0;
            Error error;
            Formula::parse("x*" + std::to_string(i)).evaluate(std::array{2.0}, value, error);
            sum += value;
            shared.evaluate(std::array{3.0}, value, error);
            sum += value;
        }
    };
    std::thread other(work, std::ref(sums[0]));
    work(sums[1]);
    other.join();
    EXPECT_EQ(sums[0], 2 * 499500.0 + 1000 * 10);
    EXPECT_EQ(sums[1], sums[0]);
}

TEST(Values, AcceptOnlyWhatTheVariableCanHold) {
    const Formula formula = Formula::parse("a+StrLen(s)");
    Values values(formula);
    EXPECT_EQ(values.firstMissing(), 0U);
    EXPECT_FALSE(values.set("a", "text") || values.set("s", 1.0));
    EXPECT_FALSE(values.set("b", 1.0) || values.set(2, 1.0));
    EXPECT_FALSE(values.set("a", std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(values.set(0, 1.0));
    EXPECT_EQ(values.firstMissing(), 1U);
    EXPECT_TRUE(values.set("s", "\xff\xfe"));
    EXPECT_EQ(values.firstMissing(), std::nullopt);
    EXPECT_EQ(values.texts()[1], "\uFFFD\uFFFD");
}
