#include "engine/numbers.h"

#include "engine/text/number_scan.h"
#include "engine/text/unicode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace varo::engine {
namespace {

constexpr int kDigits = 15;
constexpr int kMaxDecimals = 1000;

/// A number as d.ddd × 10^exponent, without its sign.
struct DecimalForm {
    std::array<char, kDigits> digits;
    int exponent;
};

DecimalForm decimalForm(double magnitude) {
    std::array<char, 32> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                            std::chars_format::scientific, kDigits - 1);
    DecimalForm form{};
    form.digits[0] = text[0];
    std::copy_n(text.begin() + 2, kDigits - 1, form.digits.begin() + 1);
    const char* exponent = text.data() + kDigits + 2;
    if (*exponent == '+') {
        ++exponent;
    }
    std::from_chars(exponent, end, form.exponent);
    return form;
}

void roundForm(DecimalForm& form, int decimals) {
    const int kept = form.exponent + 1 + decimals;
    if (kept >= kDigits) {
        return;
    }
    if (kept < 0) {
        form.digits.fill('0');
        return;
    }
    const bool up = form.digits[static_cast<std::size_t>(kept)] >= '5';
    std::fill(form.digits.begin() + kept, form.digits.end(), '0');
    if (!up) {
        return;
    }
    auto digit = form.digits.begin() + kept;
    while (digit != form.digits.begin()) {
        --digit;
        if (*digit != '9') {
            ++*digit;
            return;
        }
        *digit = '0';
    }
    form.digits[0] = '1';
    ++form.exponent;
}

bool isZero(const DecimalForm& form) {
    return std::all_of(form.digits.begin(), form.digits.end(), [](char d) { return d == '0'; });
}

/// The digit that stands for 10^power.
char digitAt(const DecimalForm& form, int power) {
    const int index = form.exponent - power;
    return index >= 0 && index < kDigits ? form.digits[static_cast<std::size_t>(index)] : '0';
}

std::string notFinite(double value) {
    if (std::isnan(value)) {
        return "nan";
    }
    return value < 0 ? "-inf" : "inf";
}

/// The number at the start of `text`, sign included; returns where it ends, or the start when there
/// is none.
const char* scanSigned(std::string_view text, double& value) {
    const char* const first = text.data();
    const char* const last = first + text.size();
    const bool negative = first != last && *first == '-';
    const char* const digits = first != last && (negative || *first == '+') ? first + 1 : first;
    const char* const end = scanNumber(digits, last, value);
    if (end == digits) {
        return first;
    }
    value = negative ? -value : value;
    return end;
}

}  // namespace

std::string formatFixed(double value, int decimals) {
    if (!std::isfinite(value)) {
        return notFinite(value);
    }
    const int places = std::clamp(decimals, 0, kMaxDecimals);
    DecimalForm form = decimalForm(std::fabs(value));
    roundForm(form, places);
    const int highest = std::max(form.exponent, 0);
    std::string text;
    text.reserve(static_cast<std::size_t>(highest + places) + 3);
    if (std::signbit(value) && !isZero(form)) {
        text += '-';
    }
    for (int power = highest; power >= -places; --power) {
        if (power == -1) {
            text += '.';
        }
        text += digitAt(form, power);
    }
    return text;
}

double roundDecimals(double value, double decimals) {
    if (!std::isfinite(value) || std::isnan(decimals)) {
        return value;
    }
    const auto places = static_cast<int>(std::clamp<double>(decimals, -kMaxDecimals, kMaxDecimals));
    DecimalForm form = decimalForm(std::fabs(value));
    roundForm(form, places);
    std::array<char, kDigits + 16> text{};
    char* const exponent = std::copy(form.digits.begin(), form.digits.end(), text.begin());
    *exponent = 'e';
    const auto [end, error] =
        std::to_chars(exponent + 1, text.data() + text.size(), form.exponent - (kDigits - 1));
    double rounded = 0;
    scanNumber(text.data(), end, rounded);
    if (!std::isfinite(rounded)) {
        return value;
    }
    return value < 0 && rounded != 0 ? -rounded : rounded;
}

std::string formatRounded(double value, double decimals) {
    const double places = std::clamp<double>(decimals, -kMaxDecimals, kMaxDecimals);
    return formatFixed(places < 0 ? roundDecimals(value, places) : value, static_cast<int>(places));
}

std::optional<double> parseNumber(std::string_view text) {
    const std::string_view trimmed = trimBlanks(text);
    double value = 0;
    const char* const end = scanSigned(trimmed, value);
    const bool whole = !trimmed.empty() && end == trimmed.data() + trimmed.size();
    return whole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

double leadingNumber(std::string_view text) {
    double value = 0;
    scanSigned(trimBlanks(text), value);
    return std::isfinite(value) ? value : 0;
}

bool startsWithNumber(std::string_view text) {
    const std::string_view trimmed = trimBlanks(text);
    double value = 0;
    return scanSigned(trimmed, value) != trimmed.data() && std::isfinite(value);
}

std::string shortest(double value) {
    if (!std::isfinite(value)) {
        return notFinite(value);
    }
    std::array<char, 32> text{};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), value == 0 ? 0 : value);
    return {text.data(), end};
}

}  // namespace varo::engine
