#include "engine/text/number_scan.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <system_error>

namespace varo::engine {
namespace {

constexpr bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// What reading the digits of a number tells.
struct Scan {
    std::uint64_t digits = 0;  ///< the significant digits as one number, while they fit
    int significant = 0;       ///< how many there are, at most kTooMany
    std::ptrdiff_t scale = 0;  ///< the power of ten that `digits` is to be multiplied by
};

constexpr std::array<double, 23> kPowersOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                              1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                              1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr int kMostExactDigits = 15;
constexpr int kTooMany = kMostExactDigits + 1;

void addDigit(Scan& scan, char digit) {
    if (scan.significant == 0 && digit == '0') {
        return;
    }
    if (scan.significant < kTooMany) {
        ++scan.significant;
    }
    scan.digits = scan.digits * 10 + static_cast<std::uint64_t>(digit - '0');
}

const char* scanExponent(const char* first, const char* last, std::ptrdiff_t& exponent) {
    if (first == last || (*first != 'e' && *first != 'E')) {
        return first;
    }
    const char* at = first + 1;
    const bool negative = at != last && *at == '-';
    if (at != last && (*at == '-' || *at == '+')) {
        ++at;
    }
    if (at == last || !isDigit(*at)) {
        return first;
    }
    // Large enough to outweigh any number of digits in memory, small enough not to overflow.
    constexpr std::ptrdiff_t kLimit = std::numeric_limits<std::ptrdiff_t>::max() / 100;
    std::ptrdiff_t magnitude = 0;
    for (; at != last && isDigit(*at); ++at) {
        magnitude = std::min(kLimit, magnitude * 10 + (*at - '0'));
    }
    exponent = negative ? -magnitude : magnitude;
    return at;
}

/// Products and quotients of whole numbers below 2^53 and exact powers of ten are rounded once,
/// correctly.
bool exactValue(const Scan& scan, double& value) {
    constexpr auto kMost = static_cast<std::ptrdiff_t>(kPowersOfTen.size()) - 1;
    if (scan.significant == 0) {
        value = 0;
        return true;
    }
    if (scan.significant > kMostExactDigits || scan.scale < -kMost || scan.scale > kMost) {
        return false;
    }
    const auto digits = static_cast<double>(scan.digits);
    value = scan.scale < 0 ? digits / kPowersOfTen[static_cast<std::size_t>(-scan.scale)]
                           : digits * kPowersOfTen[static_cast<std::size_t>(scan.scale)];
    return true;
}

/// Reads a number of few digits without an exponent, as nearly all are; null for any other.
const char* scanShort(const char* first, const char* last, double& value) {
    std::uint64_t digits = 0;
    const char* at = first;
    const auto takeDigits = [&] {
        for (; at != last && isDigit(*at); ++at) {
            digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
        }
    };
    takeDigits();
    std::ptrdiff_t decimals = 0;
    if (at != first && at != last && *at == '.') {
        const char* const point = at++;
        takeDigits();
        decimals = at - point - 1;
    }
    const bool isShort = at != first && at - first <= kMostExactDigits + 1;
    if (!isShort || (at != last && (*at == 'e' || *at == 'E'))) {
        return nullptr;
    }
    value = decimals == 0
                ? static_cast<double>(digits)
                : static_cast<double>(digits) / kPowersOfTen[static_cast<std::size_t>(decimals)];
    return at;
}

}  // namespace

const char* scanNumber(const char* first, const char* last, double& value) {
    if (const char* const end = scanShort(first, last, value)) {
        return end;
    }
    Scan scan;
    const char* at = first;
    std::ptrdiff_t wholeDigits = 0;  // those from the first that is not 0
    for (; at != last && isDigit(*at); ++at) {
        addDigit(scan, *at);
        wholeDigits += scan.significant > 0 ? 1 : 0;
    }
    std::ptrdiff_t decimals = 0;
    std::ptrdiff_t leadingZeros = 0;  // after the point, when nothing but zeros is before it
    const bool startsWithDigit = at != first;
    if (at != last && *at == '.' && (startsWithDigit || (last - at > 1 && isDigit(at[1])))) {
        for (++at; at != last && isDigit(*at); ++at) {
            addDigit(scan, *at);
            ++decimals;
            leadingZeros += scan.significant == 0 ? 1 : 0;
        }
    }
    if (at == first) {
        return first;
    }
    std::ptrdiff_t exponent = 0;
    at = scanExponent(at, last, exponent);
    scan.scale = exponent - decimals;
    if (!exactValue(scan, value)) {
        const auto [end, error] = std::from_chars(first, at, value);
        if (error == std::errc::result_out_of_range) {
            const std::ptrdiff_t power = exponent + (wholeDigits > 0 ? wholeDigits : -leadingZeros);
            value = power > 0 ? std::numeric_limits<double>::infinity() : 0;
        }
    }
    return at;
}

}  // namespace varo::engine
