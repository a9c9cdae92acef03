#include "platform/data/access/relationship_keeper.h"

#include "platform/data/access/index_key.h"
#include "platform/data/access/index_scan.h"

#include <QScopeGuard>

#include <algorithm>
#include <limits>

namespace varo::access {

namespace {

/// Through how many rows, each of which refers to the one before, a change goes.
constexpr int kMostLevels = 200;

using OptionalFields = std::vector<std::optional<QByteArray>>;

OptionalFields keyFields(const Row& row, const RelationshipSide& side) {
    OptionalFields fields;
    for (const Column* column : side.columns()) {
        const auto field = row.field(*column);
        fields.push_back(field ? std::optional(field->toByteArray()) : std::nullopt);
    }
    return fields;
}

bool isNull(const std::optional<QByteArray>& field) {
    return !field;
}

/// The key that the index of `side` has for these fields.
QByteArray keyOf(PageFile& file, const RelationshipSide& side, const OptionalFields& fields) {
    const TableDefinition& table = *side.table.definition;
    const IndexKey key = indexKey(file.header(), table, side.keys(), fields);
    if (!key.bytes) {
        throw data::Error(
            QStringLiteral("table %1, index %2: the order of the row's values is not known")
                .arg(side.table.name, side.keys().names.value(0)));
    }
    return *key.bytes;
}

/// The rows whose entry has just this key; no more than `most` of them.
std::vector<RowPlace> rowsWithKey(PageFile& file, const RelationshipSide& side,
                                  const QByteArray& key, std::size_t most) {
    std::vector<RowPlace> places;
    IndexScan scan(file, side.keys().root, key);
    while (places.size() < most && scan.next() && scan.key().startsWith(key)) {
        if (scan.key() == key) {
            places.push_back(scan.place());
        }
    }
    return places;
}

bool hasNull(const OptionalFields& fields) {
    return std::any_of(fields.begin(), fields.end(), isNull);
}

bool isSameKey(PageFile& file, const RelationshipSide& side, const Row& before, const Row& after) {
    const OptionalFields old = keyFields(before, side);
    const OptionalFields changed = keyFields(after, side);
    return old == changed || (!hasNull(old) && !hasNull(changed) &&
                              keyOf(file, side, old) == keyOf(file, side, changed));
}

/// The change that gives the columns of the key these values.
std::vector<FieldChange> keyChange(const RelationshipSide& side, const std::vector<Value>& values) {
    const TableDefinition& table = *side.table.definition;
    std::vector<FieldChange> changes(table.columns.size(), Kept{});
    for (std::size_t i = 0; i < values.size(); ++i) {
        const int position = table.positionOf(side.keys().columns[i].column);
        changes.at(static_cast<std::size_t>(position)) = values[i];
    }
    return changes;
}

[[noreturn]] void refuseReferenced(const Relationship& relationship) {
    throw data::Error(
        QStringLiteral("rows of the table %1 refer to the row of the table %2")
            .arg(relationship.referencing.table.name, relationship.referenced.table.name));
}

}  // namespace

RelationshipKeeper::RelationshipKeeper(PageFile& file, const TableDefinition& table,
                                       std::vector<Relationship> relationships, WriterOf writerOf,
                                       int& level)
    : file_(file),
      table_(table),
      relationships_(std::move(relationships)),
      writerOf_(std::move(writerOf)),
      level_(level) {}

bool RelationshipKeeper::isReferencing(const Relationship& relationship) const {
    return relationship.referencing.table.definition->page == table_.page;
}

bool RelationshipKeeper::isReferenced(const Relationship& relationship) const {
    return relationship.referenced.table.definition->page == table_.page;
}

/// All fields of the key are NULL, or a row has them.
void RelationshipKeeper::requireReferenced(const Relationship& relationship, const Row& row) {
    const OptionalFields fields = keyFields(row, relationship.referencing);
    const RelationshipSide& referenced = relationship.referenced;
    const auto nulls = std::count_if(fields.begin(), fields.end(), isNull);
    if (nulls == std::ssize(fields)) {
        return;
    }
    if (nulls > 0) {
        throw data::Error(QStringLiteral("of the fields of a row of the table %1 that refer to the "
                                         "table %2 all are to be NULL or none")
                              .arg(relationship.referencing.table.name, referenced.table.name));
    }
    if (rowsWithKey(file_, referenced, keyOf(file_, referenced, fields), 1).empty()) {
        throw data::Error(
            QStringLiteral("the table %1 has no row to which the row of the table %2 can refer")
                .arg(referenced.table.name, relationship.referencing.table.name));
    }
}

/// Those that refer to `row`.
std::vector<RowPlace> RelationshipKeeper::referencingRows(const Relationship& relationship,
                                                          const Row& row) {
    const OptionalFields fields = keyFields(row, relationship.referenced);
    if (hasNull(fields)) {
        return {};
    }
    const RelationshipSide& referencing = relationship.referencing;
    return rowsWithKey(file_, referencing, keyOf(file_, referencing, fields),
                       std::numeric_limits<std::size_t>::max());
}

/// Calls `change` with the writer of the referencing table for each of the places.
template <class Change>
void RelationshipKeeper::changeRows(const Relationship& relationship,
                                    const std::vector<RowPlace>& places, Change change) {
    if (places.empty()) {
        return;
    }
    const NamedTable& table = relationship.referencing.table;
    ++level_;
    const auto ending = qScopeGuard([this] { --level_; });
    try {
        if (level_ > kMostLevels) {
            throw data::Error(QStringLiteral("the change goes through more than %1 relationships")
                                  .arg(kMostLevels));
        }
        TableWriter& writer = writerOf_(table);
        for (const RowPlace place : places) {
            if (findRow(file_, place)) {  // else another relationship has removed it
                change(writer, place);
            }
        }
    } catch (const data::Error& error) {
        if (error.description().startsWith(u"table ")) {
            throw;  // it names the table
        }
        throw data::Error(QStringLiteral("table %1: %2").arg(table.name, error.description()),
                          error.cause());
    }
}

void RelationshipKeeper::inserted(const Row& row) {
    for (const Relationship& each : relationships_) {
        if (isReferencing(each)) {
            requireReferenced(each, row);
        }
    }
}

void RelationshipKeeper::changed(const Row& before, const Row& after) {
    for (const Relationship& each : relationships_) {
        if (isReferencing(each) && !isSameKey(file_, each.referencing, before, after)) {
            requireReferenced(each, after);
        }
        if (!isReferenced(each) || isSameKey(file_, each.referenced, before, after)) {
            continue;
        }
        const std::vector<RowPlace> places = referencingRows(each, before);
        if (!places.empty() && !each.isFollowing) {
            refuseReferenced(each);
        }
        std::vector<Value> values;
        for (const Column* column : each.referenced.columns()) {
            values.push_back(fieldValue(file_, after, *column));
        }
        const std::vector<FieldChange> changes = keyChange(each.referencing, values);
        changeRows(each, places,
                   [&](TableWriter& writer, RowPlace place) { writer.update(place, changes); });
    }
}

void RelationshipKeeper::removed(const Row& row) {
    using OnRemoval = Relationship::OnRemoval;
    for (const Relationship& each : relationships_) {
        if (!isReferenced(each)) {
            continue;
        }
        const std::vector<RowPlace> places = referencingRows(each, row);
        if (!places.empty() && each.onRemoval == OnRemoval::Refuse) {
            refuseReferenced(each);
        }
        const std::vector<Value> nulls(each.referencing.keys().columns.size());
        const std::vector<FieldChange> changes = keyChange(each.referencing, nulls);
        changeRows(each, places, [&](TableWriter& writer, RowPlace place) {
            if (each.onRemoval == OnRemoval::Remove) {
                writer.remove(place);
            } else {
                writer.update(place, changes);
            }
        });
    }
}

}  // namespace varo::access
