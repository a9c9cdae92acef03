#include "platform/data/access/decimal_digits.h"

#include <array>
#include <charconv>
#include <cmath>

namespace varo::access {

namespace {

constexpr int kMostExponent = 400;
constexpr qsizetype kMostText = 400;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Takes the sign at `at`, if there is one, and returns whether it is a minus.
bool takeSign(const QByteArray& text, qsizetype& at) {
    const bool isNegative = at < text.size() && text[at] == '-';
    at += isNegative || (at < text.size() && text[at] == '+') ? 1 : 0;
    return isNegative;
}

QByteArray takeDigits(const QByteArray& text, qsizetype& at) {
    const qsizetype begin = at;
    while (at < text.size() && isDigit(text[at])) {
        ++at;
    }
    return text.mid(begin, at - begin);
}

}  // namespace

std::optional<DecimalDigits> DecimalDigits::read(const QByteArray& text) {
    const QByteArray from = text.trimmed();
    if (from.size() > kMostText) {
        return std::nullopt;
    }
    qsizetype at = 0;
    DecimalDigits number;
    number.isNegative_ = takeSign(from, at);
    number.digits_ = takeDigits(from, at);
    if (at < from.size() && from[at] == '.') {
        const QByteArray fraction = takeDigits(from, ++at);
        number.digits_ += fraction;
        number.exponent_ = static_cast<int>(-fraction.size());
    }
    if (number.digits_.isEmpty()) {
        return std::nullopt;
    }
    if (at < from.size() && (from[at] == 'e' || from[at] == 'E')) {
        const bool isSmall = takeSign(from, ++at);
        bool isNumber = false;
        const int exponent = takeDigits(from, at).toInt(&isNumber);
        if (!isNumber || exponent > kMostExponent) {
            return std::nullopt;
        }
        number.exponent_ += isSmall ? -exponent : exponent;
    }
    if (at != from.size()) {
        return std::nullopt;
    }
    while (number.digits_.startsWith('0')) {
        number.digits_.remove(0, 1);
    }
    while (number.digits_.endsWith('0')) {
        number.digits_.chop(1);
        ++number.exponent_;
    }
    number.isNegative_ = number.isNegative_ && !number.digits_.isEmpty();
    return number;
}

std::optional<DecimalDigits> DecimalDigits::of(double value) {
    if (!std::isfinite(value)) {
        return std::nullopt;
    }
    std::array<char, 64> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    return read(QByteArray(text.data(), end.ptr - text.data()));
}

std::optional<QByteArray> DecimalDigits::scaled(int scale) const {
    if (digits_.isEmpty()) {
        return QByteArray("0");
    }
    const int zeros = exponent_ + scale;
    return zeros < 0 ? std::nullopt : std::optional(digits_ + QByteArray(zeros, '0'));
}

std::optional<qint64> DecimalDigits::scaledNumber(int scale) const {
    const auto digits = scaled(scale);
    bool isNumber = false;
    const qint64 number = digits ? ((isNegative_ ? "-" : "") + *digits).toLongLong(&isNumber) : 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

}  // namespace varo::access
