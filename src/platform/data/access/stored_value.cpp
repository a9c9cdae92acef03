#include "platform/data/access/stored_value.h"

#include "platform/data/access/decimal_digits.h"

#include <QDate>
#include <QTime>
#include <QUuid>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace varo::access {

namespace {

constexpr int kMoneyScale = 4;

/// A compressed text is as long as this at most where it may have any length.
constexpr qsizetype kMostCompressed = 512;

[[noreturn]] void refuse(const Column& column, const QString& reason) {
    throw data::Error(QStringLiteral("column %1: %2").arg(column.name, reason));
}

[[noreturn]] void refuseNumber(const Column& column) {
    refuse(column, QStringLiteral("the value is no number that the column can hold"));
}

template <class Number>
QByteArray bytesOf(Number number) {
    QByteArray bytes(sizeof number, Qt::Uninitialized);
    qToLittleEndian(number, bytes.data());
    return bytes;
}

template <class Unsigned, class Real>
QByteArray bitsOf(Real value) {
    static_assert(sizeof(Unsigned) == sizeof(Real));
    Unsigned bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bytesOf(bits);
}

DecimalDigits digitsOf(const Value& value, const Column& column) {
    std::optional<DecimalDigits> digits;
    if (const auto* integer = std::get_if<qint64>(&value)) {
        digits = DecimalDigits::read(QByteArray::number(*integer));
    } else if (const auto* real = std::get_if<double>(&value)) {
        digits = DecimalDigits::of(*real);
    } else if (const auto* text = std::get_if<Text>(&value)) {
        digits = DecimalDigits::read(text->utf8);
    }
    if (!digits) {
        refuseNumber(column);
    }
    return *digits;
}

template <class Number>
QByteArray storedInteger(const Value& value, const Column& column) {
    const auto* integer = std::get_if<qint64>(&value);
    const auto number =
        integer == nullptr ? digitsOf(value, column).scaledNumber(0) : std::optional(*integer);
    if (!number || *number < std::numeric_limits<Number>::min() ||
        *number > std::numeric_limits<Number>::max()) {
        refuseNumber(column);
    }
    return bytesOf(static_cast<Number>(*number));
}

QByteArray storedMoney(const Value& value, const Column& column) {
    const auto units = digitsOf(value, column).scaledNumber(kMoneyScale);
    if (!units) {
        refuse(column, QStringLiteral("the value is no amount with at most 4 decimals"));
    }
    return bytesOf(*units);
}

double realOf(const Value& value, const Column& column) {
    if (const auto* integer = std::get_if<qint64>(&value)) {
        return static_cast<double>(*integer);
    }
    if (const auto* real = std::get_if<double>(&value)) {
        return *real;
    }
    digitsOf(value, column);
    return std::get<Text>(value).utf8.trimmed().toDouble();
}

template <class Real, class Unsigned>
QByteArray storedReal(const Value& value, const Column& column) {
    const double number = realOf(value, column);
    if (!std::isfinite(number) || std::abs(number) > std::numeric_limits<Real>::max()) {
        refuseNumber(column);
    }
    return bitsOf<Unsigned>(static_cast<Real>(number));
}

/// A sign, then four words of a number of 128 bits, the highest first.
QByteArray storedDecimal(const Value& value, const Column& column) {
    const DecimalDigits number = digitsOf(value, column);
    const auto digits = number.scaled(column.scale);
    if (!digits || (digits->size() > column.precision && *digits != "0")) {
        refuse(column, QStringLiteral("the value is no number of %1 digits, %2 of them decimals")
                           .arg(column.precision)
                           .arg(column.scale));
    }
    std::array<quint32, 4> words{};
    for (const char digit : *digits) {
        quint64 carry = static_cast<quint64>(digit - '0');
        for (auto word = words.rbegin(); word != words.rend(); ++word) {
            carry += quint64{*word} * 10;
            *word = static_cast<quint32>(carry);
            carry >>= 32;
        }
        if (carry != 0) {
            refuseNumber(column);
        }
    }
    constexpr char kNegative = '\x80';
    QByteArray bytes(1, number.isNegative() ? kNegative : '\0');
    for (const quint32 word : words) {
        bytes += bytesOf(word);
    }
    return bytes;
}

QByteArray storedDate(const Value& value, const Column& column) {
    const auto* text = std::get_if<Text>(&value);
    if (text == nullptr) {
        return storedReal<double, quint64>(value, column);
    }
    const QString written = QString::fromUtf8(text->utf8).trimmed();
    constexpr int kDateLength = 10;
    const QDate date = QDate::fromString(written.left(kDateLength), u"yyyy-MM-dd");
    const QTime time = written.size() == kDateLength
                           ? QTime(0, 0)
                           : QTime::fromString(written.mid(kDateLength), u" HH:mm:ss");
    constexpr int kFirstYear = 100;
    constexpr int kLastYear = 9999;
    if (!date.isValid() || !time.isValid() || date.year() < kFirstYear || date.year() > kLastYear) {
        refuse(column, QStringLiteral("the value is no date of the years 100 to 9999"));
    }
    constexpr double kSecondsADay = 86400;
    const auto days = static_cast<double>(QDate(1899, 12, 30).daysTo(date));
    const double fraction = QTime(0, 0).secsTo(time) / kSecondsADay;
    return bitsOf<quint64>(days < 0 ? days - fraction : days + fraction);
}

QByteArray storedGuid(const Value& value, const Column& column) {
    const auto* text = std::get_if<Text>(&value);
    const QUuid guid = text == nullptr ? QUuid() : QUuid::fromString(QLatin1String(text->utf8));
    const QByteArray written = guid.toByteArray(QUuid::WithoutBraces).toUpper();
    const QByteArray given = text == nullptr ? QByteArray() : text->utf8.toUpper();
    if (given != written && given != '{' + written + '}') {
        refuse(column, QStringLiteral("the value is no GUID"));
    }
    return bytesOf(guid.data1) + bytesOf(guid.data2) + bytesOf(guid.data3) +
           QByteArray(reinterpret_cast<const char*>(guid.data4), sizeof guid.data4);
}

QByteArray textOf(const Value& value, const Column& column) {
    if (const auto* integer = std::get_if<qint64>(&value)) {
        return QByteArray::number(*integer);
    }
    if (const auto* real = std::get_if<double>(&value)) {
        std::array<char, 64> text;
        const auto end = std::to_chars(text.data(), text.data() + text.size(), *real);
        return {text.data(), end.ptr - text.data()};
    }
    const auto* text = std::get_if<Text>(&value);
    if (text == nullptr) {
        refuse(column, QStringLiteral("the value is no text"));
    }
    return text->utf8;
}

/// Whether a text may be stored with a byte for a character, and is shorter so.
bool canCompress(const QString& text, const Column& column) {
    constexpr qsizetype kMark = 2;
    return column.isCompressed && text.size() > kMark && text.size() <= kMostCompressed &&
           std::all_of(text.begin(), text.end(),
                       [](QChar c) { return c.unicode() > 0 && c.unicode() <= 0xFF; });
}

QByteArray storedText(const Value& value, const Column& column) {
    const QByteArray utf8 = textOf(value, column);
    const QString text = QString::fromUtf8(utf8);
    if (text.toUtf8() != utf8) {
        refuse(column, QStringLiteral("the text is not valid UTF-8"));
    }
    if (column.type == FieldType::Text && text.size() > column.size / 2) {
        refuse(column, QStringLiteral("the text has %1 characters; the column holds %2 at most")
                           .arg(text.size())
                           .arg(column.size / 2));
    }
    if (canCompress(text, column)) {
        return "\xFF\xFE" + text.toLatin1();
    }
    // What begins with these two bytes counts as compressed.
    if (text.startsWith(QChar::ByteOrderMark)) {
        refuse(column, QStringLiteral("the text begins with a byte order mark"));
    }
    QByteArray bytes;
    bytes.reserve(text.size() * 2);
    for (const QChar c : text) {
        bytes += bytesOf(c.unicode());
    }
    return bytes;
}

QByteArray storedBinary(const Value& value, const Column& column) {
    const auto* bytes = std::get_if<QByteArray>(&value);
    const auto* text = std::get_if<Text>(&value);
    if (text != nullptr && text->utf8.isEmpty()) {
        return text->utf8;  // how a statement says that there are no bytes
    }
    if (bytes == nullptr) {
        refuse(column, QStringLiteral("the value is not binary"));
    }
    if (column.type == FieldType::Binary && bytes->size() > column.size) {
        refuse(column, QStringLiteral("the value has %1 bytes; the column holds %2 at most")
                           .arg(bytes->size())
                           .arg(column.size));
    }
    return *bytes;
}

std::optional<QByteArray> storedYes(const Value& value, const Column& column) {
    const bool isNo = digitsOf(value, column).scaled(0) == QByteArray("0");
    return isNo ? std::nullopt : std::optional(QByteArray());
}

QByteArray storedVariable(const Value& value, const Column& column) {
    const bool isText = column.type == FieldType::Text || column.type == FieldType::Memo;
    const QByteArray bytes = isText ? storedText(value, column) : storedBinary(value, column);
    if (column.isFixed && bytes.size() != column.size) {
        refuse(column, QStringLiteral("the value does not have the length of the column"));
    }
    return bytes;
}

}  // namespace

std::optional<QByteArray> storedValue(const Value& value, const Column& column) {
    if (std::holds_alternative<std::monostate>(value)) {
        return std::nullopt;
    }
    switch (column.type) {
        case FieldType::YesNo:
            return storedYes(value, column);
        case FieldType::Byte:
            return storedInteger<quint8>(value, column);
        case FieldType::Integer:
            return storedInteger<qint16>(value, column);
        case FieldType::Long:
            return storedInteger<qint32>(value, column);
        case FieldType::BigInteger:
            return storedInteger<qint64>(value, column);
        case FieldType::Money:
            return storedMoney(value, column);
        case FieldType::Single:
            return storedReal<float, quint32>(value, column);
        case FieldType::Double:
            return storedReal<double, quint64>(value, column);
        case FieldType::Date:
            return storedDate(value, column);
        case FieldType::Decimal:
            return storedDecimal(value, column);
        case FieldType::Guid:
            return storedGuid(value, column);
        case FieldType::Text:
        case FieldType::Memo:
        case FieldType::Binary:
        case FieldType::Ole:
            return storedVariable(value, column);
        default:
            refuse(column, QStringLiteral("fields of this type are not written"));
    }
}

}  // namespace varo::access
