#include "library/dump_complaints.h"

#include <utility>

namespace varo {

namespace {

constexpr qsizetype kMostLines = 1000;

}  // namespace

std::optional<qint32> wholeNumber(const data::Recordset& rs, int column) {
    switch (rs.valueType(column)) {
        case data::ValueType::Null:
            return 0;
        case data::ValueType::Integer:
            break;
        case data::ValueType::Floating:
            if (rs.real(column) == static_cast<double>(rs.integer(column))) {
                break;
            }
            return std::nullopt;
        default:
            return std::nullopt;
    }
    const qint64 number = rs.integer64(column);
    return std::in_range<qint32>(number) ? std::optional(static_cast<qint32>(number))
                                         : std::nullopt;
}

void DumpComplaints::add(const char* table, qint64 row, const QString& what) {
    if (++count_ <= kMostLines) {
        lines_.append(QStringLiteral("row %1 of table %2: ").arg(row).arg(QLatin1String(table)) +
                      what);
    }
}

std::optional<std::vector<qint32>> DumpComplaints::numbers(const data::Recordset& rs,
                                                           const char* table,
                                                           std::initializer_list<int> columns) {
    std::vector<qint32> found;
    for (const int column : columns) {
        const auto number = wholeNumber(rs, column);
        if (!number) {
            add(table, rs.integer64(0),
                QStringLiteral("it is left out, %1 is no whole number of 32 bits")
                    .arg(rs.columnName(column)));
            return std::nullopt;
        }
        found.push_back(*number);
    }
    return found;
}

QStringList DumpComplaints::takeLines() {
    const qsizetype left = std::exchange(count_, 0) - kMostLines;
    if (left > 0) {
        lines_.append(QStringLiteral("... and %1 more").arg(left));
    }
    return std::exchange(lines_, {});
}

}  // namespace varo
