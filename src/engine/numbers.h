#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Numbers as text, the same in every locale: `.` is the decimal point and there are no separators.
namespace varo::engine {

/// `value` with `decimals` places, rounded half away from zero on its 15-digit decimal form: 2.675
/// with 2 places is "2.68". A value that rounds to zero has no sign. `decimals` is cut to 0 ...
/// 1000. A value that is not finite gives "inf", "-inf" or "nan".
std::string formatFixed(double value, int decimals);

/// `value` rounded as formatFixed does it. `decimals` is cut to its integer part and may be
/// negative: 1250 with -2 places is 1300.
double roundDecimals(double value, double decimals);

/// formatFixed of a value whose `decimals` are as in roundDecimals: 1250 with -2 places is "1300".
std::string formatRounded(double value, double decimals);

/// The number that `text` stands for: blanks around it, an optional sign, digits with at most one
/// decimal point, an optional exponent, and nothing else. Nothing when it is no number or too large
/// for a double; one too small is 0.
std::optional<double> parseNumber(std::string_view text);

/// The number that `text` begins with, after blanks; 0 when there is none or it is too large for a
/// double.
double leadingNumber(std::string_view text);

/// True when `text` begins, after blanks, with a number that leadingNumber() returns.
bool startsWithNumber(std::string_view text);

/// The shortest text that parseNumber reads back as `value`; without a sign for zero.
std::string shortest(double value);

}  // namespace varo::engine
