#pragma once

#include "engine/machine/arithmetic.h"
#include "engine/machine/operations.h"

#include <bit>
#include <cmath>
#include <cstdint>

/// Operations that are computed here, faster than by the C library and in a form that compilers
/// turn into vector code. Each is within one unit in the last place of the C library's value.
namespace varo::engine {

/// The constant 1.5·2^52. A number below 2^51 that it is added to is rounded to a whole number,
/// which the lowest bits of the sum then hold.
inline constexpr double kRounder = 6755399441055744.0;

/// c0 + c1 z + ... + c5 z^5, with as many operations at once as can be.
template <class Arithmetic>
[[gnu::always_inline]] inline double polynomial(double z, double c0, double c1, double c2,
                                                double c3, double c4, double c5) {
    const double square = z * z;
    const double start = Arithmetic::multiplyAdd(c1, z, c0);
    const double middle = Arithmetic::multiplyAdd(c3, z, c2);
    const double end = Arithmetic::multiplyAdd(c5, z, c4);
    return Arithmetic::multiplyAdd(square, Arithmetic::multiplyAdd(square, end, middle), start);
}

/// An angle as quarters·π/2 + high + low.
struct ReducedAngle {
    double high;
    double low;
    std::uint64_t quarters;

    /// False for large angles, and for those so near a multiple of π/2 that too few digits are
    /// left.
    [[gnu::always_inline]] bool isUsable(double angle) const {
        constexpr double kLargest = 1e5;
        constexpr double kSmallestRemainder = 1e-4;
        return std::fabs(angle) <= kLargest && std::fabs(high) >= kSmallestRemainder;
    }
};

template <class Arithmetic>
[[gnu::always_inline]] inline ReducedAngle reduceAngle(double angle) {
    constexpr double kTwoByPi = 0.63661977236758138;
    // π/2 in two parts; the first has 33 bits, so that its multiples are exact.
    constexpr double kFirst = 0x1.921fb544p0;
    constexpr double kSecond = 6.077100506506192e-11;
    const double shifted = Arithmetic::multiplyAdd(angle, kTwoByPi, kRounder);
    const double count = shifted - kRounder;
    const double afterFirst = Arithmetic::multiplyAdd(-count, kFirst, angle);
    const double high = Arithmetic::multiplyAdd(-count, kSecond, afterFirst);
    const double low = Arithmetic::multiplyAdd(-count, kSecond, afterFirst - high);
    return {high, low, std::bit_cast<std::uint64_t>(shifted)};
}

/// sin(high + low) for |high| up to π/4. The polynomial has the least largest relative error, below
/// 2^-57.
template <class Arithmetic>
[[gnu::always_inline]] inline double sineNearZero(double high, double low) {
    const double z = high * high;
    const double sum =
        polynomial<Arithmetic>(z, -0.1666666666666663, 8.333333333321914e-3, -1.9841269829451645e-4,
                               2.755731357919717e-6, -2.5050741755856293e-8, 1.589590684616353e-10);
    const double lowPart = Arithmetic::multiplyAdd(-0.5 * z, low, low);
    return high + Arithmetic::multiplyAdd(high * z, sum, lowPart);
}

/// cos(high + low) for |high| up to π/4. The polynomial has the least largest absolute error, below
/// 2^-64.
template <class Arithmetic>
[[gnu::always_inline]] inline double cosineNearZero(double high, double low) {
    const double z = high * high;
    const double sum = polynomial<Arithmetic>(z, 4.166666666666666e-2, -1.3888888888874471e-3,
                                              2.4801587289668054e-5, -2.755731439935366e-7,
                                              2.0875728962753423e-9, -1.1359913253627342e-11);
    const double half = 0.5 * z;
    const double start = 1 - half;
    const double rest = Arithmetic::multiplyAdd(z * z, sum, -high * low);
    return start + (((1 - start) - half) + rest);
}

/// The sine of `angle` and so many right angles more.
template <class Arithmetic>
[[gnu::always_inline]] inline bool computeSine(double angle, std::uint64_t rightAngles,
                                               double& value) {
    const ReducedAngle reduced = reduceAngle<Arithmetic>(angle);
    const std::uint64_t turned = reduced.quarters + rightAngles;
    const double sine = (turned & 1) != 0 ? cosineNearZero<Arithmetic>(reduced.high, reduced.low)
                                          : sineNearZero<Arithmetic>(reduced.high, reduced.low);
    value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(sine) ^ (turned & 2) << 62);
    return reduced.isUsable(angle);
}

/// The power of kE: x is split into k·ln 2 + r, and e^r is a polynomial with a relative error below
/// 2^-57.
template <class Arithmetic>
[[gnu::always_inline]] inline bool computePowerOfE(double x, double& value) {
    constexpr double kByLogarithmOfTwo = 1.4426950408889634;
    // ln 2 in two parts; the first has 33 bits, so that its multiples are exact.
    constexpr double kFirst = 0.69314718060195446;
    constexpr double kSecond = -4.2009150726810846e-11;
    constexpr double kLargest = 700;
    const double shifted = Arithmetic::multiplyAdd(x, kByLogarithmOfTwo, kRounder);
    const double count = shifted - kRounder;
    const double high = Arithmetic::multiplyAdd(-count, kFirst, x);
    const double low = Arithmetic::multiplyAdd(-count, kSecond, -kLogarithmShortfall * x);
    const double r = high + low;
    const double rest = (high - r) + low;
    const double square = r * r;
    const double start =
        polynomial<Arithmetic>(r, 0.5000000000000011, 0.16666666666666422, 4.1666666666526804e-2,
                               8.333333333488638e-3, 1.3888888944421397e-3, 1.9841269519485803e-4);
    const double end1 = Arithmetic::multiplyAdd(2.7557574526753290e-6, r, 2.4801492336061387e-5);
    const double end2 = Arithmetic::multiplyAdd(2.5003921758537137e-8, r, 2.7630507131315198e-7);
    const double end = Arithmetic::multiplyAdd(square, end2, end1);
    const double sum = Arithmetic::multiplyAdd(square * square * square, end, start);
    const double one = 1 + r;
    const double lost = (1 - one) + r;
    const double power = one + (Arithmetic::multiplyAdd(square, sum, rest) + lost);
    const std::uint64_t exponent = std::bit_cast<std::uint64_t>(shifted) << 52;
    value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(power) + exponent);
    return std::fabs(x) <= kLargest;
}

/// x^4: the part of x*x that rounding took away is brought back. Squaring twice may be two units
/// off.
template <class Arithmetic>
[[gnu::always_inline]] inline double computeFourth(double x) {
    const double square = x * x;
    double lost = 0;
    if constexpr (std::is_same_v<Arithmetic, FusedArithmetic>) {
        lost = Arithmetic::multiplyAdd(x, x, -square);
    } else {
        constexpr double kSplitter = 134217729;  // 2^27 + 1: cuts a number into halves of 26 bits
        const double scaled = kSplitter * x;
        const double high = scaled - (scaled - x);
        const double low = x - high;
        lost = ((high * high - square) + 2 * high * low) + low * low;
    }
    return square * square + 2 * square * lost;
}

/// Puts the value of a kernel into `value`. False for arguments that only libraryValue() can serve;
/// all that are not finite are among them, or give what is not.
template <Kernel kernel, class Arithmetic>
[[gnu::always_inline]] inline bool compute(double x, double& value) {
    if constexpr (kernel == Kernel::Sine) {
        return computeSine<Arithmetic>(x, 0, value);
    } else if constexpr (kernel == Kernel::Cosine) {
        return computeSine<Arithmetic>(x, 1, value);
    } else if constexpr (kernel == Kernel::PowerOfE) {
        return computePowerOfE<Arithmetic>(x, value);
    } else {
        static_assert(kernel == Kernel::Fourth);
        value = computeFourth<Arithmetic>(x);
        return true;
    }
}

/// The value of a kernel for any argument, from the C library. Not finite when the argument is not.
template <Kernel kernel>
double libraryValue(double x) {
    if constexpr (kernel == Kernel::Sine) {
        return std::sin(x);
    } else if constexpr (kernel == Kernel::Cosine) {
        return std::cos(x);
    } else if constexpr (kernel == Kernel::PowerOfE) {
        return std::pow(kE, x) + (x - x);  // a power of -∞ would be 0
    } else {
        static_assert(kernel == Kernel::Fourth);
        return computeFourth<PlainArithmetic>(x);
    }
}

}  // namespace varo::engine
