#pragma once

#include <QByteArray>

#include <optional>

namespace varo::access {

/// A decimal number of any length.
class DecimalDigits {
  public:
    /// The number that a text is, with an exponent if it has one; nothing when it is none, or one
    /// of hundreds of digits.
    static std::optional<DecimalDigits> read(const QByteArray& text);

    /// The shortest decimal that reads back as `value`; nothing when that is not finite.
    static std::optional<DecimalDigits> of(double value);

    bool isNegative() const { return isNegative_; }

    /// The digits of the number times 10 to the power of `scale`, without sign and leading zeros;
    /// nothing when that is no whole number.
    std::optional<QByteArray> scaled(int scale) const;

    /// The same as a number, with its sign; nothing also when it has more than 64 bits.
    std::optional<qint64> scaledNumber(int scale) const;

  private:
    bool isNegative_ = false;
    QByteArray digits_;  ///< without zeros at either end
    int exponent_ = 0;   ///< of 10, with which the digits are multiplied
};

}  // namespace varo::access
