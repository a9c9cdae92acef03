// Powers and functions beside those of the C library for numbers with more digits.

#include "engine/formula.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>

using namespace varo::engine;

namespace {

static_assert(std::numeric_limits<long double>::digits >= 64);

using Arguments = std::vector<double>;
using Reference = long double (*)(long double);

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::mt19937_64& random() {
    static std::mt19937_64 generator(20240229);
    return generator;
}

Arguments uniform(double least, double greatest) {
    std::uniform_real_distribution<double> distribution(least, greatest);
    Arguments arguments(2500);
    std::generate(arguments.begin(), arguments.end(), [&] { return distribution(random()); });
    return arguments;
}

/// As many of each order of magnitude from 10^least to 10^greatest.
Arguments magnitudes(double least, double greatest) {
    Arguments arguments = uniform(least, greatest);
    for (double& argument : arguments) {
        argument = std::pow(10.0, argument);
    }
    return arguments;
}

/// Multiples of a quarter turn, and the doubles beside them.
Arguments quarterTurns() {
    Arguments arguments;
    for (int i = 0; i < 2000; ++i) {
        const auto multiple = static_cast<double>(i < 500 ? i : random()() % 1'000'000'000);
        const double angle = multiple * (std::numbers::pi / 2);
        arguments.insert(arguments.end(),
                         {angle, std::nextafter(angle, 0.0), std::nextafter(angle, kInfinity)});
    }
    return arguments;
}

Arguments operator+(Arguments left, const Arguments& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Arguments withBothSigns(const Arguments& arguments) {
    Arguments negative = arguments;
    std::transform(negative.begin(), negative.end(), negative.begin(), std::negate());
    return arguments + negative;
}

/// Expects `text`, a formula of x or of x and y, to give at each x and the one y the best double or
/// one next to it, and the same in a table as alone. Where no double is large enough it must fail.
template <class Exact>
void expectAccurate(const std::string& text, const Arguments& arguments, Exact exact,
                    double y = 0) {
    const Formula formula = Formula::parse(text);
    const std::array columns{Column(std::span<const double>(arguments)), Column(y)};
    std::vector<double> results(arguments.size());
    std::vector<ErrorCode> status(arguments.size());
    formula.evaluateRows(std::span(columns).first(formula.variableCount()), results, status);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const double best = static_cast<double>(exact(static_cast<long double>(arguments[i])));
        double alone = 0;
        Error error;
        formula.evaluate(std::array{arguments[i], y}, alone, error);
        ASSERT_EQ(error.code, std::isinf(best) ? ErrorCode::OutOfRange : ErrorCode::None);
        ASSERT_EQ(status[i], error.code) << text << " of " << arguments[i];
        if (!error) {
            const bool accurate = alone >= std::nextafter(best, -kInfinity) &&
                                  alone <= std::nextafter(best, kInfinity);
            ASSERT_TRUE(accurate && alone == results[i])
                << text << " of " << std::hexfloat << arguments[i] << " is " << alone << " and "
                << results[i] << ", not " << best;
        }
    }
}

}  // namespace

TEST(Accuracy, OfPowersIsThatOfADouble) {
    const Arguments positive = magnitudes(-120, 120) + uniform(0, 20) + uniform(0.99, 1.01);
    const Arguments any = withBothSigns(positive);
    for (const char* digits :
         {"0",  "1",  "2",  "3",   "4",   "5",    "6",   "7",    "10",  "33",
          "-1", "-2", "-3", "-20", "0.5", "-0.5", "1.5", "0.25", "2.6", "177.7"}) {
        const double exponent = std::stod(digits);
        const auto exact = [exponent](long double x) {
            return std::pow(x, static_cast<long double>(exponent));
        };
        const Arguments& bases = std::trunc(exponent) == exponent ? any : positive;
        expectAccurate(std::string("x^") + digits, bases, exact);
        expectAccurate("x^y", bases, exact, exponent);
    }
}

TEST(Accuracy, OfFunctionsIsThatOfADouble) {
    // Among them those where another way of computing takes over.
    const Arguments angles =
        withBothSigns(uniform(-100, 100) + quarterTurns() + uniform(0, 1e15) +
                      uniform(99'900, 100'100) + uniform(1.5707, 1.5709) + magnitudes(-300, 15));
    const Arguments ratios = withBothSigns(uniform(-1, 1) + magnitudes(-300, 0) + Arguments{0, 1});
    const Arguments positive = magnitudes(-300, 300) + uniform(0.5, 2);
    const Arguments any = withBothSigns(positive + uniform(0, 10));
    const Arguments exponents = uniform(-700, 700) + uniform(-2, 2) + magnitudes(-20, 0);
    const Reference arcCotangent = [](long double x) { return std::atan2(1.0L, x); };
    // Of a double the library itself gives the logarithm no better than two doubles away.
    const Reference logarithm = [](long double x) {
        return static_cast<long double>(std::log10(static_cast<double>(x)));
    };
    const Reference power = [](long double x) {
        return std::pow<long double>(2.718281828459045, x);
    };
    const std::tuple<const char*, const Arguments&, Reference> cases[] = {
        {"sin(x)", angles, std::sin},      {"cos(x)", angles, std::cos},
        {"tan(x)", angles, std::tan},      {"arcsin(x)", ratios, std::asin},
        {"arccos(x)", ratios, std::acos},  {"arctan(x)", any, std::atan},
        {"arcctan(x)", any, arcCotangent}, {"ctan(x)", any, arcCotangent},
        {"sqrt(x)", positive, std::sqrt},  {"ln(x)", positive, std::log},
        {"log(x)", positive, logarithm},   {"exp^x", exponents, power},
    };
    for (const auto& [formula, arguments, exact] : cases) {
        expectAccurate(formula, arguments, exact);
    }
}
