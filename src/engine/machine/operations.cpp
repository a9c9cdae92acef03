#include "engine/machine/operations.h"

#include <array>
#include <utility>

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

template <std::size_t... index>
double valueOf(Unary operation, double x, std::index_sequence<index...>) {
    double value = 0;
    (void)((static_cast<std::size_t>(operation) == index &&
            (value = apply<static_cast<Unary>(index)>(x), true)) ||
           ...);
    return value;
}

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

double apply(Operator op, double x, double y) {
    switch (op) {
        case Operator::Add:
            return apply<Operator::Add>(x, y);
        case Operator::Subtract:
            return apply<Operator::Subtract>(x, y);
        case Operator::Multiply:
            return apply<Operator::Multiply>(x, y);
        case Operator::Divide:
            return apply<Operator::Divide>(x, y);
        case Operator::Power:
            return apply<Operator::Power>(x, y);
        case Operator::Same:
            return apply<Operator::Same>(x, y);
        case Operator::Different:
            return apply<Operator::Different>(x, y);
        case Operator::Less:
            return apply<Operator::Less>(x, y);
        case Operator::LessOrSame:
            return apply<Operator::LessOrSame>(x, y);
        case Operator::Greater:
            return apply<Operator::Greater>(x, y);
        default:
            return apply<Operator::GreaterOrSame>(x, y);
    }
}

double apply(Unary operation, double x) {
    constexpr auto count = static_cast<std::size_t>(Unary::Deci) + 1;
    return valueOf(operation, x, std::make_index_sequence<count>());
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
