#include "platform/data/access/value.h"

#include "platform/data/access/long_value.h"
#include "platform/data/access/text.h"

#include <QDateTime>
#include <QLocale>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace varo::access {

namespace {

template <class To, class From>
To bitsAs(From bits) {
    static_assert(sizeof(To) == sizeof(From));
    To value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

Value number(double value) {
    return std::isnan(value) ? Value() : Value(value);
}

Value single(quint32 bits) {
    const auto value = bitsAs<float>(bits);
    if (!std::isfinite(value)) {
        return number(static_cast<double>(value));
    }
    std::array<char, 64> digits;
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    double read = 0;
    std::from_chars(digits.data(), written.ptr, read);
    return read;
}

/// A decimal of these digits (no leading zero but the last one), `scale` of them behind the point.
Value decimal(bool isNegative, QByteArray digits, int scale) {
    if (scale > 0) {
        digits = digits.rightJustified(scale + 1, '0');
        digits.insert(digits.size() - scale, '.');
        while (digits.endsWith('0')) {
            digits.chop(1);
        }
        if (digits.endsWith('.')) {
            digits.chop(1);
        }
    }
    if (isNegative && digits != "0") {
        digits.prepend('-');
    }
    const double value = digits.toDouble();
    const QByteArray readBack =
        QLocale::c().toString(value, 'f', QLocale::FloatingPointShortest).remove(u',').toLatin1();
    return readBack == digits ? Value(value) : Value(Text{digits});
}

Value money(qint64 units) {
    constexpr int kScale = 4;
    const quint64 magnitude =
        units < 0 ? quint64{0} - static_cast<quint64>(units) : static_cast<quint64>(units);
    return decimal(units < 0, QByteArray::number(magnitude), kScale);
}

/// 17 bytes: the sign, then four words of a number of 128 bits, the highest first.
Value wideDecimal(const Bytes& field, int scale) {
    std::array<quint32, 4> words;
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = field.u32(1 + static_cast<qsizetype>(i) * 4);
    }
    QByteArray digits;
    bool isZero = false;
    while (!isZero) {
        quint64 rest = 0;
        isZero = true;
        for (quint32& word : words) {
            rest = (rest << 32) | word;
            word = static_cast<quint32>(rest / 10);
            rest %= 10;
            isZero = isZero && word == 0;
        }
        digits.prepend(static_cast<char>('0' + rest));
    }
    return decimal(field.byte(0) != 0, digits, scale);
}

Value guid(const Bytes& field) {
    const auto hex = [](quint32 value, int digits) {
        return QByteArray::number(value, 16).rightJustified(digits, '0').toUpper();
    };
    QByteArray text =
        '{' + hex(field.u32(0), 8) + '-' + hex(field.u16(4), 4) + '-' + hex(field.u16(6), 4) + '-';
    text += field.part(8, 2).toByteArray().toHex().toUpper() + '-' +
            field.part(10, 6).toByteArray().toHex().toUpper() + '}';
    return Text{text};
}

/// Days since the end of 1899, the time as their fraction, which counts forwards for days before,
/// too.
Value date(double days) {
    constexpr double kFirst = -657434;  // of the year 100
    constexpr double kEnd = 2958466;    // of the year 10000
    if (!(days >= kFirst && days < kEnd)) {
        return number(days);
    }
    constexpr qint64 kSecondsADay = 86400;
    double whole = 0;
    const double fraction = std::abs(std::modf(days, &whole));
    const QDate day = QDate(1899, 12, 30).addDays(static_cast<qint64>(whole));
    const qint64 seconds = std::llround(fraction * kSecondsADay);
    const QDateTime time = QDateTime(day, QTime(0, 0), Qt::UTC).addSecs(seconds);
    return Text{time.toString(u"yyyy-MM-dd HH:mm:ss").toLatin1()};
}

/// Texts with the days since the beginning of the year 1, then the units of 100 ns in the day.
Value extendedDate(const Bytes& field) {
    bool isDay = false;
    bool isTime = false;
    const qint64 days = field.part(0, 19).toByteArray().toLongLong(&isDay);
    const qint64 units = field.part(20, 19).toByteArray().toLongLong(&isTime);
    constexpr qint64 kUnitsASecond = 10'000'000;
    constexpr qint64 kMostDays = 3'652'058;
    if (!isDay || !isTime || days < 0 || days > kMostDays || units < 0 ||
        units >= kUnitsASecond * 86400) {
        throwDamaged("an extended date is none");
    }
    const QDate day = QDate(1, 1, 1).addDays(days);
    const QTime time = QTime(0, 0).addSecs(static_cast<int>(units / kUnitsASecond));
    return Text{day.toString(u"yyyy-MM-dd").toLatin1() + ' ' +
                time.toString(u"HH:mm:ss").toLatin1() + '.' +
                QByteArray::number(units % kUnitsASecond).rightJustified(7, '0')};
}

/// The value of a computed column has a header of its own.
Bytes withoutHeader(const Bytes& field) {
    constexpr int kLength = 16;
    constexpr int kHeader = 20;
    if (field.size() < kHeader) {
        return field;
    }
    return field.part(kHeader, std::min<qsizetype>(field.u32(kLength), field.size() - kHeader));
}

/// The content of a long value; that of a computed column has the header within it.
Bytes longContent(const QByteArray& value, const Column& column) {
    return column.isComputed ? withoutHeader(Bytes(value)) : Bytes(value);
}

bool isLong(const Column& column) {
    return column.type == FieldType::Memo || column.type == FieldType::Ole;
}

Value valueOf(PageFile& file, const Bytes& field, const Column& column) {
    switch (column.type) {
        case FieldType::Byte:
            return qint64{field.byte(0)};
        case FieldType::Integer:
            return qint64{static_cast<qint16>(field.u16(0))};
        case FieldType::Long:
            return qint64{static_cast<qint32>(field.u32(0))};
        case FieldType::BigInteger:
            return static_cast<qint64>(field.u64(0));
        case FieldType::Money:
            return money(static_cast<qint64>(field.u64(0)));
        case FieldType::Single:
            return single(field.u32(0));
        case FieldType::Double:
            return number(bitsAs<double>(field.u64(0)));
        case FieldType::Date:
            return date(bitsAs<double>(field.u64(0)));
        case FieldType::ExtendedDate:
            return extendedDate(field);
        case FieldType::Decimal:
            return wideDecimal(field, column.scale);
        case FieldType::Guid:
            return guid(field);
        case FieldType::Text:
            return Text{fieldText(field, file.header())};
        case FieldType::Memo:
            return Text{fieldText(longContent(longValue(file, field), column), file.header())};
        case FieldType::Ole:
            return longContent(longValue(file, field), column).toByteArray();
        case FieldType::Binary:
            return field.toByteArray();
        case FieldType::YesNo:
            return qint64{field.byte(0) != 0};
        default:
            return {};
    }
}

}  // namespace

Value fieldValue(PageFile& file, const Row& row, const Column& column) {
    if (column.type == FieldType::YesNo && !column.isComputed) {
        return qint64{row.isYes(column)};
    }
    const auto field = row.field(column);
    if (!field || (isLong(column) && field->isEmpty())) {
        return {};
    }
    if (!column.isComputed || isLong(column)) {
        return valueOf(file, *field, column);
    }
    const Bytes content = withoutHeader(*field);
    const bool isText = column.type == FieldType::Text;
    return (content.isEmpty() && !isText) || column.type == FieldType::Decimal
               ? Value()
               : valueOf(file, content, column);
}

}  // namespace varo::access
