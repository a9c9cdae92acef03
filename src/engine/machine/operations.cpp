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

using OfNumber = double (*)(double);
using OfTwoNumbers = double (*)(double, double);

template <Unary operation>
constexpr OfNumber implementation() {
    if constexpr (exists(operation)) {
        return apply<operation>;
    } else {
        return nullptr;
    }
}

/// By their Unary.
constexpr auto kOfNumber = []<std::size_t... index>(std::index_sequence<index...>) {
    return std::array{implementation<static_cast<Unary>(index)>()...};
}
(std::make_index_sequence<kUnaryCount>());

/// By their Operator.
constexpr auto kOfTwoNumbers = []<std::size_t... index>(std::index_sequence<index...>) {
    return std::array<OfTwoNumbers, sizeof...(index)>{apply<static_cast<Operator>(index)>...};
}
(std::make_index_sequence<static_cast<std::size_t>(Operator::GreaterOrSame) + 1>());

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

double apply(Operator op, double x, double y) {
    return kOfTwoNumbers[static_cast<std::size_t>(op)](x, y);
}

double apply(Unary operation, double x) {
    return kOfNumber[static_cast<std::size_t>(operation)](x);
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
    if (const Function function = functionOf(operation); function != Function::Unknown) {
        return infoOf(function).failure;
    }
    switch (operation) {
        case Unary::Factorial:
            return ErrorCode::Factorial;
        case Unary::SquareRoot:
            return ErrorCode::Power;
        case Unary::Not:
        case Unary::Truth:
        case Unary::Square:
        case Unary::Cube:
        case Unary::Fourth:
        case Unary::PowerOfE:
            break;
    }
    return ErrorCode::OutOfRange;
}

}  // namespace varo::engine
