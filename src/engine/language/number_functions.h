#pragma once

#include <cmath>

/// The functions of numbers. Where one has no value, the result is not finite.
namespace varo::engine {

inline double tangent(double x) {
    return std::tan(x);
}

inline double arcSine(double x) {
    return std::asin(x);
}

inline double arcCosine(double x) {
    return std::acos(x);
}

inline double arcTangent(double x) {
    return std::atan(x);
}

/// The angle of the point (x, 1): keeps its precision for large x, and lies in (0, π).
inline double arcCotangent(double x) {
    return std::atan2(1.0, x);
}

inline double squareRoot(double x) {
    return std::sqrt(x);
}

inline double naturalLogarithm(double x) {
    return std::log(x);
}

inline double decimalLogarithm(double x) {
    return std::log10(x);
}

inline double integerPart(double x) {
    return std::trunc(x);
}

inline double fractionalPart(double x) {
    return x - std::trunc(x);
}

/// What division leaves, with the sign of the dividend.
inline double modulo(double dividend, double divisor) {
    const double quotient = dividend / divisor;
    constexpr double kMostExactWhole = 9007199254740992;  // 2^53
    // Beyond that the quotient has lost its last places, and with it the modulo.
    return std::fabs(quotient) < kMostExactWhole ? dividend - divisor * std::trunc(quotient)
                                                 : std::fmod(dividend, divisor);
}

}  // namespace varo::engine
