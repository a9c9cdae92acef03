#include "engine/number_functions.h"

#include "engine/numbers.h"

#include <array>
#include <cmath>

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

ErrorCode modulo(double dividend, double divisor, double& result) {
    if (divisor == 0) {
        return ErrorCode::DivisionByZero;
    }
    const double quotient = dividend / divisor;
    constexpr double mostExactWhole = 9007199254740992;  // 2^53
    // Beyond that the quotient has lost its last places, and with it the remainder.
    result = std::fabs(quotient) < mostExactWhole ? dividend - divisor * std::trunc(quotient)
                                                  : std::fmod(dividend, divisor);
    return ErrorCode::None;
}

}  // namespace

ErrorCode factorial(double value, double& result) {
    if (!(value >= 0 && value <= kLargestFactorial) || value != std::trunc(value)) {
        return ErrorCode::Factorial;
    }
    result = kFactorials[static_cast<std::size_t>(value)];
    return ErrorCode::None;
}

ErrorCode power(double base, double exponent, double& result) {
    if (base == 0 && exponent < 0) {
        return ErrorCode::Power;
    }
    result = std::pow(base, exponent);
    return std::isnan(result) ? ErrorCode::Power : ErrorCode::None;
}

ErrorCode callNumberFunction(Function function, double first, double second, double& result) {
    switch (function) {
        case Function::Sin:
            result = std::sin(first);
            return ErrorCode::None;
        case Function::Cos:
            result = std::cos(first);
            return ErrorCode::None;
        case Function::Tan:
            result = std::tan(first);
            return ErrorCode::None;
        case Function::Arcsin:
            result = std::asin(first);
            return std::fabs(first) <= 1 ? ErrorCode::None : ErrorCode::OutsideDomain;
        case Function::Arccos:
            result = std::acos(first);
            return std::fabs(first) <= 1 ? ErrorCode::None : ErrorCode::OutsideDomain;
        case Function::Arctan:
            result = std::atan(first);
            return ErrorCode::None;
        case Function::Arcctan:
        case Function::Ctan:
            // The angle of the point (x, 1): keeps its precision for large x, and lies in (0, π).
            result = std::atan2(1.0, first);
            return ErrorCode::None;
        case Function::Sqrt:
            result = std::sqrt(first);
            return first >= 0 ? ErrorCode::None : ErrorCode::OutsideDomain;
        case Function::Ln:
            result = std::log(first);
            return first > 0 ? ErrorCode::None : ErrorCode::OutsideDomain;
        case Function::Log:
            result = std::log10(first);
            return first > 0 ? ErrorCode::None : ErrorCode::OutsideDomain;
        case Function::Int:
            result = std::trunc(first);
            return ErrorCode::None;
        case Function::Deci:
            result = first - std::trunc(first);
            return ErrorCode::None;
        case Function::Preci:
            result = roundDecimals(first, second);
            return ErrorCode::None;
        case Function::Mod:
            return modulo(first, second, result);
        default:
            return ErrorCode::OutsideDomain;
    }
}

}  // namespace varo::engine
