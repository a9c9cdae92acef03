#include "platform/data/access/row_encoder.h"

#include "platform/data/access/row.h"
#include "platform/data/access/row_page.h"

#include <algorithm>

namespace varo::access {

namespace {

bool isInRow(const Column& column) {
    return column.type != FieldType::YesNo || column.isComputed;
}

void appendU16(qsizetype number, QByteArray& bytes) {
    bytes.append(2, '\0');
    qToLittleEndian(static_cast<quint16>(number), bytes.data() + bytes.size() - 2);
}

/// All fields of fixed length, also those that are NULL.
QByteArray fixedPart(const TableDefinition& table, const Fields& fields) {
    QByteArray part;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = table.columns[i];
        if (!column.isFixed || !isInRow(column)) {
            continue;
        }
        const qsizetype size = fixedSize(column);
        part.resize(std::max(part.size(), column.fixed + size), '\0');
        if (fields[i]) {
            if (fields[i]->size() != size) {
                throwDamaged("a field is not as long as its column says");
            }
            part.replace(column.fixed, size, *fields[i]);
        }
    }
    return part;
}

/// The field of each column of variable length, by its place; columns that were deleted have none.
std::vector<const QByteArray*> variableFields(const TableDefinition& table, const Fields& fields) {
    std::vector<const QByteArray*> variable(static_cast<std::size_t>(table.variableColumns));
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = table.columns[i];
        if (!column.isFixed && isInRow(column) && fields[i]) {
            if (column.variable >= table.variableColumns) {
                throwDamaged("a column is behind the last one");
            }
            variable[static_cast<std::size_t>(column.variable)] = &*fields[i];
        }
    }
    return variable;
}

}  // namespace

QByteArray encodeRow(const TableDefinition& table, const Fields& fields) {
    QByteArray row;
    appendU16(table.columnNumbers, row);
    row += fixedPart(table, fields);
    QByteArray marks((table.columnNumbers + 7) / 8, '\0');
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const int number = table.columns[i].number;
        if (number >= table.columnNumbers) {
            throwDamaged("a column is behind the last one");
        }
        if (fields[i]) {
            marks[number / 8] = static_cast<char>(marks[number / 8] | 1 << (number % 8));
        }
    }
    if (table.variableColumns > 0) {
        std::vector<qsizetype> offsets;
        for (const QByteArray* field : variableFields(table, fields)) {
            offsets.push_back(row.size());
            row += field == nullptr ? QByteArray() : *field;
        }
        appendU16(row.size(), row);
        for (auto offset = offsets.rbegin(); offset != offsets.rend(); ++offset) {
            appendU16(*offset, row);
        }
        appendU16(table.variableColumns, row);
    }
    row += marks;
    if (row.size() > kMostRowBytes) {
        throw data::Error(QStringLiteral("the row takes %1 bytes; a page holds %2 at most")
                              .arg(row.size())
                              .arg(kMostRowBytes));
    }
    return row;
}

}  // namespace varo::access
