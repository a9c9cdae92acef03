#include "platform/data/access/index_key.h"

#include <QtEndian>

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
        for (char& byte : bytes) {
            byte = static_cast<char>(~byte);
        }
    }
    key += (isDescending ? kDescendingStart : kAscendingStart) + bytes;
    return true;
}

}  // namespace varo::access
