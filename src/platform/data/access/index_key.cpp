#include "platform/data/access/index_key.h"

#include "platform/data/access/long_value.h"
#include "platform/data/access/text.h"
#include "platform/data/access/text_key.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace varo::access {

namespace {

constexpr char kAscendingStart = '\x7F';
constexpr char kDescendingStart = '\x80';

/// A number with its sign turned round, so that its bytes, the highest first, have its order.
template <class Number>
QByteArray ordered(qint64 number) {
    using Unsigned = std::make_unsigned_t<Number>;
    constexpr auto kSign = static_cast<Unsigned>(
        std::is_signed_v<Number> ? Unsigned{1} << (sizeof(Number) * 8 - 1) : 0);
    QByteArray bytes(sizeof(Number), '\0');
    qToBigEndian(static_cast<Unsigned>(static_cast<Unsigned>(number) ^ kSign), bytes.data());
    return bytes;
}

template <class Number>
std::pair<qint64, qint64> rangeOf() {
    return {std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()};
}

template <class Number>
bool fits(qint64 number) {
    return number >= std::numeric_limits<Number>::min() &&
           number <= std::numeric_limits<Number>::max();
}

void complement(QByteArray& bytes) {
    for (char& byte : bytes) {
        byte = static_cast<char>(~byte);
    }
}

QByteArray reversed(QByteArray bytes) {
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

/// The bytes of a number, the highest first, of a field of this size.
std::optional<QByteArray> bigEndian(const QByteArray& field, qsizetype size) {
    if (field.size() != size) {
        return std::nullopt;
    }
    return reversed(field);
}

void flipSign(QByteArray& bytes) {
    bytes[0] = static_cast<char>(bytes[0] ^ 0x80);
}

/// Of a number with sign in two's complement.
std::optional<QByteArray> integerKey(const QByteArray& field, qsizetype size) {
    auto bytes = bigEndian(field, size);
    if (bytes) {
        flipSign(*bytes);
    }
    return bytes;
}

/// Of a floating-point number; nothing for -0 and NaN, of which the order is not known.
std::optional<QByteArray> floatKey(const QByteArray& field, qsizetype size) {
    auto bytes = bigEndian(field, size);
    if (!bytes) {
        return std::nullopt;
    }
    const double value = size == 4 ? static_cast<double>(qFromBigEndian<float>(bytes->constData()))
                                   : qFromBigEndian<double>(bytes->constData());
    const bool isNegative = (bytes->at(0) & 0x80) != 0;
    if (std::isnan(value) || (value == 0 && isNegative)) {
        return std::nullopt;
    }
    if (isNegative) {
        complement(*bytes);
    } else {
        flipSign(*bytes);
    }
    return bytes;
}

/// Of a decimal: a byte for its sign, then its digits as a number of 128 bits. In descending order
/// Jet turns the bits of the digits, not those of the sign, so that negative numbers come first; of
/// later versions that order is not known.
std::optional<QByteArray> decimalKey(const Header& header, const QByteArray& field,
                                     bool isDescending) {
    constexpr qsizetype kSize = 17;
    if (field.size() != kSize || (isDescending && header.version != Version::Jet4)) {
        return std::nullopt;
    }
    const bool isNegative = field.at(0) != 0;
    QByteArray digits;
    for (qsizetype word = 1; word < kSize; word += 4) {
        digits += reversed(field.mid(word, 4));
    }
    if (isNegative && digits.count('\0') == digits.size()) {
        return std::nullopt;
    }
    if (isNegative != isDescending) {
        complement(digits);
    }
    return (isNegative ? '\x00' : '\xFF') + digits;
}

/// Of bytes: pieces of 8, the last one filled up with zeros, behind each but the last a 9, behind
/// the last the number of its bytes.
std::optional<QByteArray> binaryKey(const QByteArray& field) {
    constexpr qsizetype kPiece = 8;
    if (field.isEmpty()) {
        return std::nullopt;
    }
    QByteArray key;
    for (qsizetype at = 0; at < field.size(); at += kPiece) {
        const qsizetype left = field.size() - at;
        key += field.mid(at, kPiece).leftJustified(kPiece, '\0');
        key += static_cast<char>(left > kPiece ? kPiece + 1 : left);
    }
    return key;
}

/// The first three parts of a GUID are numbers of 4, 2 and 2 bytes.
std::optional<QByteArray> guidKey(const QByteArray& field) {
    constexpr qsizetype kSize = 16;
    if (field.size() != kSize) {
        return std::nullopt;
    }
    QByteArray bytes = field;
    std::reverse(bytes.begin(), bytes.begin() + 4);
    std::reverse(bytes.begin() + 4, bytes.begin() + 6);
    std::reverse(bytes.begin() + 6, bytes.begin() + 8);
    return binaryKey(bytes);
}

/// The key of a field in ascending order without its start.
std::optional<QByteArray> ascendingKey(const Header& header, const Column& column,
                                       const QByteArray& field) {
    switch (column.type) {
        case FieldType::YesNo:
            // Yes is -1 and before no.
            return QByteArray(1, field.isEmpty() || field.at(0) == 0 ? '\xFF' : '\x00');
        case FieldType::Byte:
            return bigEndian(field, 1);
        case FieldType::Integer:
            return integerKey(field, 2);
        case FieldType::Long:
            return integerKey(field, 4);
        case FieldType::Money:
        case FieldType::BigInteger:
            return integerKey(field, 8);
        case FieldType::Single:
            return floatKey(field, 4);
        case FieldType::Double:
        case FieldType::Date:
            return floatKey(field, 8);
        case FieldType::Guid:
            return guidKey(field);
        case FieldType::Binary:
            return binaryKey(field);
        case FieldType::Text:
        case FieldType::Memo:
            return textKey(column.sortOrder, column.sortVersion,
                           QString::fromUtf8(fieldText(Bytes(field), header)));
        default:
            return std::nullopt;
    }
}

}  // namespace

bool hasNumberKey(const Column& column) {
    return column.type == FieldType::Byte || column.type == FieldType::Integer ||
           column.type == FieldType::Long;
}

std::pair<qint64, qint64> numberRange(const Column& column) {
    switch (column.type) {
        case FieldType::Byte:
            return rangeOf<quint8>();
        case FieldType::Integer:
            return rangeOf<qint16>();
        default:
            return rangeOf<qint32>();
    }
}

bool appendNumberKey(const Column& column, bool isDescending, qint64 number, QByteArray& key) {
    QByteArray bytes;
    switch (column.type) {
        case FieldType::Byte:
            bytes = fits<quint8>(number) ? ordered<quint8>(number) : QByteArray();
            break;
        case FieldType::Integer:
            bytes = fits<qint16>(number) ? ordered<qint16>(number) : QByteArray();
            break;
        case FieldType::Long:
            bytes = fits<qint32>(number) ? ordered<qint32>(number) : QByteArray();
            break;
        default:
            break;
    }
    if (bytes.isEmpty()) {
        return false;
    }
    if (isDescending) {
        complement(bytes);
    }
    key += (isDescending ? kDescendingStart : kAscendingStart) + bytes;
    return true;
}

QByteArray nullKey(bool isDescending) {
    return QByteArray(1, isDescending ? '\xFF' : '\x00');
}

std::optional<QByteArray> fieldKey(const Header& header, const Column& column, bool isDescending,
                                   const QByteArray& field) {
    std::optional<QByteArray> key;
    switch (column.type) {
        case FieldType::Decimal:
            key = decimalKey(header, field, isDescending);
            break;
        case FieldType::Guid:
        case FieldType::Binary:
        case FieldType::Text:
        case FieldType::Memo:
            // How the ends of their pieces are turned is not known.
            key = isDescending ? std::nullopt : ascendingKey(header, column, field);
            break;
        default:
            key = ascendingKey(header, column, field);
            if (key && isDescending) {
                complement(*key);
            }
    }
    if (key) {
        key->prepend(isDescending ? kDescendingStart : kAscendingStart);
    }
    return key;
}

IndexKey indexKey(const Header& header, const TableDefinition& table, const Index& index,
                  std::span<const std::optional<QByteArray>> fields) {
    IndexKey key;
    key.bytes = QByteArray();
    std::size_t nulls = 0;
    for (std::size_t i = 0; i < index.columns.size(); ++i) {
        const auto& [number, isDescending] = index.columns[i];
        const Column* column = table.columnByNumber(number);
        if (column == nullptr || column->isComputed) {
            key.bytes.reset();
        } else if (!fields[i]) {
            ++nulls;
            if (key.bytes) {
                *key.bytes += nullKey(isDescending);
            }
        } else if (key.bytes) {
            const auto part = fieldKey(header, *column, isDescending, *fields[i]);
            key.bytes = part ? std::optional(*key.bytes + *part) : std::nullopt;
        }
    }
    key.hasNull = nulls > 0;
    key.isLeftOut = index.ignoresNulls && nulls == index.columns.size();
    return key;
}

IndexKey indexKey(PageFile& file, const TableDefinition& table, const Index& index,
                  const Row& row) {
    std::vector<std::optional<QByteArray>> fields;
    for (const IndexColumn& indexed : index.columns) {
        const Column* column = table.columnByNumber(indexed.column);
        if (column == nullptr) {
            fields.emplace_back();
        } else if (column->type == FieldType::YesNo) {
            fields.emplace_back(QByteArray(1, row.isYes(*column) ? '\x01' : '\x00'));
        } else if (const auto field = row.field(*column)) {
            const bool isLong = column->type == FieldType::Memo && !field->isEmpty();
            fields.emplace_back(isLong ? longValue(file, *field) : field->toByteArray());
        } else {
            fields.emplace_back();
        }
    }
    return indexKey(file.header(), table, index, fields);
}

}  // namespace varo::access
