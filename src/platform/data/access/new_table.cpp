#include "platform/data/access/new_table.h"

#include "platform/data/access/definition_format.h"
#include "platform/data/access/row.h"
#include "platform/data/access/row_page.h"

#include <QSet>

#include <algorithm>

namespace varo::access {

namespace {

constexpr int kLongestName = 64;
constexpr int kMostColumns = 255;
constexpr int kMostIndexes = 32;
constexpr int kLongestText = 255;
constexpr int kLongestBinary = 510;
constexpr int kMostDigits = 28;

[[noreturn]] void refuse(const NewTable& table, const QString& reason) {
    throw data::Error(QStringLiteral("the table %1 cannot be created: %2").arg(table.name, reason));
}

bool isName(const QString& name) {
    const auto isForbidden = [](QChar character) {
        return character.unicode() < ' ' || QStringLiteral(".!`[]").contains(character);
    };
    return !name.isEmpty() && name.size() <= kLongestName && !name.startsWith(u' ') &&
           std::none_of(name.begin(), name.end(), isForbidden);
}

/// The first version that has columns of this type; nothing when none can be created.
std::optional<Version> firstVersion(FieldType type) {
    switch (type) {
        case FieldType::Complex:
        case FieldType::ExtendedDate:
            return std::nullopt;
        case FieldType::BigInteger:
            return Version::Ace16;
        default:
            return Version::Jet4;
    }
}

bool isInRange(int number, int least, int most) {
    return number >= least && number <= most;
}

bool hasValidSize(const NewColumn& column) {
    switch (column.type) {
        case FieldType::Text:
            return isInRange(column.size, 1, kLongestText);
        case FieldType::Binary:
            return isInRange(column.size, 1, kLongestBinary);
        case FieldType::Decimal:
            return isInRange(column.precision, 1, kMostDigits) &&
                   isInRange(column.scale, 0, column.precision);
        default:
            return true;
    }
}

void requireColumns(Version version, const NewTable& table) {
    QSet<QString> names;
    bool hasCounter = false;
    if (!isInRange(static_cast<int>(table.columns.size()), 1, kMostColumns)) {
        refuse(table, QStringLiteral("a table has 1 to %1 columns").arg(kMostColumns));
    }
    for (const NewColumn& column : table.columns) {
        const auto first = firstVersion(column.type);
        if (!isName(column.name)) {
            refuse(table, QStringLiteral("%1 is no name of a column").arg(column.name));
        }
        if (!names.contains(column.name.toCaseFolded())) {
            names.insert(column.name.toCaseFolded());
        } else {
            refuse(table, QStringLiteral("it has two columns %1").arg(column.name));
        }
        if (!first || version < *first) {
            refuse(table, QStringLiteral("the file can have no column like %1").arg(column.name));
        }
        if (!hasValidSize(column)) {
            refuse(table,
                   QStringLiteral("the size of the column %1 is not allowed").arg(column.name));
        }
        if (column.isAutoNumber && column.type != FieldType::Guid &&
            (column.type != FieldType::Long || std::exchange(hasCounter, true))) {
            refuse(table, QStringLiteral("the column %1 cannot count").arg(column.name));
        }
    }
}

/// The bytes that each row has in any case fit on a page.
void requireRoom(const NewTable& table) {
    int bytes = 0;
    for (const NewColumn& column : table.columns) {
        bytes += isFixed(column) || column.type == FieldType::Decimal ? fieldSize(column) : 2;
    }
    if (bytes > kMostRowBytes - kMostColumns) {
        refuse(table, QStringLiteral("a row does not fit on a page"));
    }
}

void requireIndexes(const NewTable& table) {
    QSet<QString> names;
    bool hasPrimary = false;
    if (table.indexes.size() > kMostIndexes) {
        refuse(table, QStringLiteral("a table has at most %1 indexes").arg(kMostIndexes));
    }
    for (const NewIndex& index : table.indexes) {
        const auto refuseIndex = [&](const QString& reason) {
            refuse(table, QStringLiteral("index %1: %2").arg(index.name, reason));
        };
        if (!isName(index.name) || names.contains(index.name.toCaseFolded())) {
            refuseIndex(QStringLiteral("the name is none, or is there twice"));
        }
        names.insert(index.name.toCaseFolded());
        if (index.isPrimary && std::exchange(hasPrimary, true)) {
            refuseIndex(QStringLiteral("the table has another primary key"));
        }
        if (!isInRange(static_cast<int>(index.columns.size()), 1, kIndexColumns)) {
            refuseIndex(QStringLiteral("an index has 1 to %1 columns").arg(kIndexColumns));
        }
        for (const NewIndexColumn& column : index.columns) {
            const auto found = std::find_if(
                table.columns.begin(), table.columns.end(), [&](const NewColumn& each) {
                    return column.name.compare(each.name, Qt::CaseInsensitive) == 0;
                });
            if (found == table.columns.end() || found->type == FieldType::Ole) {
                refuseIndex(QStringLiteral("it cannot have the column %1").arg(column.name));
            }
        }
    }
}

}  // namespace

bool isFixed(const NewColumn& column) {
    switch (column.type) {
        case FieldType::Binary:
        case FieldType::Text:
        case FieldType::Ole:
        case FieldType::Memo:
        case FieldType::Decimal:
            return false;
        default:
            return true;
    }
}

int fieldSize(const NewColumn& column) {
    Column like;
    switch (column.type) {
        case FieldType::YesNo:
            return 1;
        case FieldType::Text:
            return column.size * 2;
        case FieldType::Binary:
            return column.size;
        case FieldType::Memo:
        case FieldType::Ole:
            return 0;
        default:
            like.type = column.type;
            return fixedSize(like);
    }
}

void requireValid(Version version, const NewTable& table) {
    if (version < Version::Jet4) {
        refuse(table, QStringLiteral("files of Access 97 are read only"));
    }
    if (!isName(table.name)) {
        refuse(table, QStringLiteral("that is no name of a table"));
    }
    requireColumns(version, table);
    requireRoom(table);
    requireIndexes(table);
}

}  // namespace varo::access
