#include "library/filter_store.h"

#include "library/condition_check.h"
#include "library/filter_reader.h"
#include "store/attempt.h"

#include <algorithm>
#include <limits>

namespace varo {

std::optional<StoredCondition> FilterStore::read(qint32 filterID) {
    std::optional<StoredCondition> condition;
    attempt([&] {
        const data::ReadSnapshot snapshot(connection_);
        condition = conditionFromRows(readFilterRows(connection_, filterID));
    });
    return condition;
}

bool FilterStore::saveOver(qint32 filterID, const ConditionTree& tree) {
    return filterID != 0 && conditionFaults(tree).empty() && attempt([&] {
               data::Transaction transaction(connection_);
               insertRows(filterID, tree);
               transaction.commit();
           });
}

std::optional<qint32> FilterStore::saveNew(const ConditionTree& tree, qint32 beyond) {
    qint32 filterID = 0;
    const bool saved = conditionFaults(tree).empty() && attempt([&] {
                           data::Transaction transaction(connection_);
                           filterID = nextNumber(
                               "Select Max(n) From (Select Max(UserID) As n From FilterCond Union "
                               "All Select Max(FilterID) From FilterExpressions Union All "
                               "Select Max(FilterID) From Property Union All Select ?)",
                               beyond);
                           insertRows(filterID, tree);
                           transaction.commit();
                       });
    return saved ? std::optional(filterID) : std::nullopt;
}

bool FilterStore::remove(qint32 filterID) {
    return attempt([&] {
        data::Transaction transaction(connection_);
        removeRows(filterID);
        transaction.commit();
    });
}

void FilterStore::removeRows(qint32 filterID) {
    connection_.execute(QStringLiteral("Delete From FilterExpressions Where FilterID = ?"),
                        {filterID});
    connection_.execute(QStringLiteral("Delete From FilterCond Where UserID = ?"), {filterID});
}

/// Replaces the rows of the filter by those of `tree`.
void FilterStore::insertRows(qint32 filterID, const ConditionTree& tree) {
    const qint32 firstId = nextNumber(
        "Select Max(n) From (Select Max(ID) As n From FilterCond Union All "
        "Select Max(ExpID) From FilterExpressions Union All Select ?)",
        0);
    removeRows(filterID);
    const FilterRows rows = conditionToRows(tree, firstId);
    for (const FilterNodeRow& row : rows.nodes) {
        connection_.execute(
            QStringLiteral("Insert Into FilterCond(ID,UserID,ParentID,Type) Values(?,?,?,?)"),
            {row.id, filterID, row.parent, row.type});
    }
    for (const auto& [id, term] : rows.terms) {
        connection_.execute(
            QStringLiteral("Insert Into FilterExpressions(FilterID,ExpID,TableName,FieldName,"
                           "FieldType,CompareType,TheConst) Values(?,?,?,?,?,?,?)"),
            {filterID, id, term.table, term.name, term.fieldType, term.type, term.constant});
    }
    const StoredCondition stored = conditionFromRows(readFilterRows(connection_, filterID));
    if (!stored.isWhole || !stored.remarks.isEmpty() || stored.tree != tree) {
        throw data::Error(QStringLiteral("the tables do not keep the filter as it is"));
    }
}

/// One more than the largest number that `query` gives, at least 1.
qint32 FilterStore::nextNumber(const char* query, qint32 beyond) {
    const data::Recordset largest = connection_.query(QLatin1StringView(query), {beyond});
    const qint64 next = std::max<qint64>(largest.integer64(0), 0) + 1;
    if (next > std::numeric_limits<qint32>::max() - kMaxConditionNodes) {
        throw data::Error(QStringLiteral("the filters have run out of numbers"));
    }
    return static_cast<qint32>(next);
}

}  // namespace varo
