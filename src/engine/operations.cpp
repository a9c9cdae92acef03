#include "engine/operations.h"

#include <array>

namespace varo::engine {
namespace {

constexpr std::size_t kLargestFactorial = 170;

constexpr std::array<double, kLargestFactorial + 1> kFactorials = [] {
    std::array<double, kLargestFactorial + 1> values{};
    values[0] = 1;
    for (std::size_t i = 1; i < values.size(); ++i) {
        // With 64 bits of precision the product is near enough to round to the nearest double;
        // products of doubles would drift away from it.
        long double product = 1;
        for (std::size_t k = 2; k <= i; ++k) {
            product *= static_cast<long double>(k);
        }
        values[i] = static_cast<double>(product);
    }
    return values;
}();

}  // namespace

double factorial(double value) {
    if (!(value >= 0 && value <= kLargestFactorial) || value != std::trunc(value)) {
        return std::nan("");
    }
    return kFactorials[static_cast<std::size_t>(value)];
}

double power(double base, double exponent) {
    return std::pow(base, exponent);
}

double modulo(double dividend, double divisor) {
    const double quotient = dividend / divisor;
    constexpr double mostExactWhole = 9007199254740992;  // 2^53
    // Beyond that the quotient has lost its last places, and with it the remainder.
    return std::fabs(quotient) < mostExactWhole ? dividend - divisor * std::trunc(quotient)
                                                : std::fmod(dividend, divisor);
}

ErrorCode explain(Operator op, double x, double y) {
    if (op == Operator::Divide && y == 0) {
        return ErrorCode::DivisionByZero;
    }
    if (op == Operator::Power && ((x == 0 && y < 0) || std::isnan(std::pow(x, y)))) {
        return ErrorCode::Power;
    }
    return ErrorCode::OutOfRange;
}

ErrorCode explain(Unary operation) {
    switch (operation) {
        case Unary::Factorial:
            return ErrorCode::Factorial;
        case Unary::SquareRoot:
            return ErrorCode::Power;
        case Unary::Arcsin:
        case Unary::Arccos:
        case Unary::Sqrt:
        case Unary::Ln:
        case Unary::Log:
            return ErrorCode::OutsideDomain;
        default:
            return ErrorCode::OutOfRange;
    }
}

}  // namespace varo::engine
