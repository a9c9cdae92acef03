#include "platform/data/access/relationships.h"

#include "platform/data/access/catalog.h"
#include "platform/data/access/value.h"

#include <algorithm>
#include <map>
#include <set>

namespace varo::access {

namespace {

using namespace Qt::Literals::StringLiterals;

bool isSameName(const QString& one, const QString& other) {
    return one.compare(other, Qt::CaseInsensitive) == 0;
}

/// The names of a referencing column and of the one to which it refers.
using ColumnNames = std::pair<QString, QString>;

ColumnNames folded(const QString& referencing, const QString& referenced) {
    return {referencing.toCaseFolded(), referenced.toCaseFolded()};
}

/// What the table of relationships says of one.
struct StatedRelationship {
    QString referencing;
    QString referenced;
    quint32 flags = 0;
    qint64 columnCount = 0;
    std::set<ColumnNames> columns;
    bool isContradictory = false;
};

/// A row of the table of relationships: a pair of columns of a relationship.
class StatedRow {
  public:
    StatedRow(PageFile& file, const TableDefinition& table, const FoundRow& found)
        : file_(file), table_(table), row_(file.layout(), table, found.page, found.bytes) {}

    QString text(QStringView column) const {
        const Value value = field(column);
        const auto* text = std::get_if<Text>(&value);
        return text == nullptr ? QString() : QString::fromUtf8(text->utf8);
    }

    qint64 number(QStringView column) const {
        const Value value = field(column);
        const auto* number = std::get_if<qint64>(&value);
        return number == nullptr ? -1 : *number;
    }

  private:
    Value field(QStringView column) const {
        const int position = table_.column(column);
        if (position < 0) {
            throwDamaged("the table of relationships lacks a column");
        }
        return fieldValue(file_, row_, table_.columns[static_cast<std::size_t>(position)]);
    }

    PageFile& file_;
    const TableDefinition& table_;
    Row row_;
};

/// The relationships in which the table has a part and which are to be enforced.
std::vector<StatedRelationship> statedRelationships(PageFile& file, const QString& name) {
    const auto page = systemTable(file, u"MSysRelationships");
    if (!page) {
        return {};
    }
    const TableDefinition table = readTable(file, *page);
    std::map<QString, StatedRelationship> byName;
    for (RowScan rows(file, table); const auto found = rows.next();) {
        const StatedRow row(file, table, *found);
        const auto flags = static_cast<quint32>(row.number(u"grbit"));
        StatedRelationship read{row.text(u"szObject"),
                                row.text(u"szReferencedObject"),
                                flags,
                                row.number(u"ccolumn"),
                                {}};
        const auto [place, isNew] =
            byName.try_emplace(row.text(u"szRelationship").toCaseFolded(), read);
        StatedRelationship& stated = place->second;
        stated.isContradictory |= stated.flags != flags || stated.columnCount != read.columnCount ||
                                  !isSameName(stated.referencing, read.referencing) ||
                                  !isSameName(stated.referenced, read.referenced);
        stated.isContradictory |=
            !stated.columns.insert(folded(row.text(u"szColumn"), row.text(u"szReferencedColumn")))
                 .second;
    }
    std::vector<StatedRelationship> all;
    for (const auto& [key, stated] : byName) {
        const bool isConcerned =
            isSameName(stated.referencing, name) || isSameName(stated.referenced, name);
        if (isConcerned && (stated.isContradictory || (stated.flags & kNotEnforced) == 0)) {
            all.push_back(stated);
        }
    }
    return all;
}

/// Whether fields of both columns that are equal have the same keys, and are copied whole.
bool isComparable(const Column& one, const Column& other) {
    switch (one.type) {
        case FieldType::YesNo:
        case FieldType::Memo:
        case FieldType::Ole:
        case FieldType::Complex:
        case FieldType::ExtendedDate:
            return false;
        case FieldType::Decimal:
            return one.type == other.type && one.scale == other.scale &&
                   one.precision == other.precision;
        case FieldType::Text:
            return one.type == other.type && one.sortOrder == other.sortOrder &&
                   one.sortVersion == other.sortVersion;
        default:
            return one.type == other.type;
    }
}

class RelationshipReader {
  public:
    RelationshipReader(PageFile& file, const NamedTable& table,
                       const std::vector<NamedTable>& tables)
        : table_(table), tables_(tables), stated_(statedRelationships(file, table.name)) {}

    /// False when something is not understood.
    bool read() {
        const TableDefinition& definition = *table_.definition;
        for (const ForeignIndex& own : definition.foreignIndexes) {
            const auto other = std::find_if(
                tables_.begin(), tables_.end(),
                [&](const NamedTable& each) { return each.definition->page == own.otherTable; });
            const ForeignIndex* partner =
                other == tables_.end() ? nullptr : partnerOf(own, *other->definition);
            if (partner == nullptr) {
                return false;
            }
            const bool isReferencing = own.side == kReferencingSide;
            const RelationshipSide ownSide{table_, own.tree};
            const RelationshipSide otherSide{*other, partner->tree};
            // A relationship of a table with itself has both of its indexes there.
            if ((isReferencing || other->definition->page != definition.page) &&
                !add(own, isReferencing ? ownSide : otherSide,
                     isReferencing ? otherSide : ownSide)) {
                return false;
            }
        }
        return stated_.empty();
    }

    const std::vector<Relationship>& relationships() const { return relationships_; }

  private:
    /// The index of the other table that says the same of the relationship.
    const ForeignIndex* partnerOf(const ForeignIndex& own, const TableDefinition& other) const {
        const auto found = std::find_if(
            other.foreignIndexes.begin(), other.foreignIndexes.end(),
            [&](const ForeignIndex& each) {
                return each.number == own.otherNumber && each.otherNumber == own.number &&
                       each.otherTable == table_.definition->page &&
                       each.onChange == own.onChange && each.onRemoval == own.onRemoval &&
                       std::minmax(each.side, own.side) ==
                           std::minmax(kReferencedSide, kReferencingSide);
            });
        return found == other.foreignIndexes.end() ? nullptr : &*found;
    }

    bool add(const ForeignIndex& index, const RelationshipSide& referencing,
             const RelationshipSide& referenced) {
        const std::vector<const Column*> from = referencing.columns();
        const std::vector<const Column*> to = referenced.columns();
        if (from.size() != to.size() || from.empty() || !referenced.keys().isUnique) {
            return false;
        }
        std::set<ColumnNames> names;
        for (std::size_t i = 0; i < from.size(); ++i) {
            if (from[i] == nullptr || to[i] == nullptr || !isComparable(*from[i], *to[i])) {
                return false;
            }
            names.insert(folded(from[i]->name, to[i]->name));
        }
        const auto flags = flagsOf(index);
        const auto found =
            std::find_if(stated_.begin(), stated_.end(), [&](const StatedRelationship& stated) {
                return !stated.isContradictory && stated.columns == names &&
                       stated.columnCount == static_cast<qint64>(from.size()) &&
                       (stated.flags & ~(kJoins | kOneToOne)) == flags &&
                       isSameName(stated.referencing, referencing.table.name) &&
                       isSameName(stated.referenced, referenced.table.name);
            });
        if (found == stated_.end()) {
            return false;
        }
        stated_.erase(found);
        relationships_.push_back({referencing, referenced, index.onChange == kCascade,
                                  static_cast<Relationship::OnRemoval>(index.onRemoval)});
        return true;
    }

    const NamedTable& table_;
    const std::vector<NamedTable>& tables_;
    std::vector<StatedRelationship> stated_;  ///< those that no index has been found for
    std::vector<Relationship> relationships_;
};

}  // namespace

std::optional<quint32> flagsOf(const ForeignIndex& index) {
    if (index.onChange > kCascade || index.onRemoval > kSetNull) {
        return std::nullopt;
    }
    constexpr quint32 kRemovals[] = {0, kRemovalsCascade, kRemovalsSetNull};
    return (index.onChange == kCascade ? kChangesCascade : 0) | kRemovals[index.onRemoval];
}

std::vector<const Column*> RelationshipSide::columns() const {
    std::vector<const Column*> all;
    for (const IndexColumn& each : keys().columns) {
        all.push_back(table.definition->columnByNumber(each.column));
    }
    return all;
}

std::optional<std::vector<Relationship>> relationshipsOf(PageFile& file, const NamedTable& table,
                                                         const std::vector<NamedTable>& tables) {
    RelationshipReader reader(file, table, tables);
    if (!reader.read()) {
        return std::nullopt;
    }
    return reader.relationships();
}

}  // namespace varo::access
