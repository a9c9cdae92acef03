#include "platform/data/access/table_plan.h"

#include "platform/data/access/index_key.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace varo::access {

namespace {

/// The use that a condition on the first column of an index can have.
int useOf(int operation) {
    switch (operation) {
        case SQLITE_INDEX_CONSTRAINT_EQ:
            return kEqual;
        case SQLITE_INDEX_CONSTRAINT_IS:
        case SQLITE_INDEX_CONSTRAINT_ISNULL:
            return kIs;
        case SQLITE_INDEX_CONSTRAINT_GT:
        case SQLITE_INDEX_CONSTRAINT_GE:
            return kAbove;
        case SQLITE_INDEX_CONSTRAINT_LT:
        case SQLITE_INDEX_CONSTRAINT_LE:
            return kBelow;
        default:
            return 0;
    }
}

/// A way to find the rows, and what SQLite is to hand to it.
struct Choice {
    int plan = kWholeTable;
    std::array<int, 3> constraints{-1, -1, -1};  ///< by use: equal or is, above, below
    double cost = 0;
    sqlite3_int64 rows = 0;
    bool isOrdered = false;
};

bool isOrderedBy(const sqlite3_index_info& info, int column) {
    return info.nOrderBy == 1 && info.aOrderBy[0].iColumn == column && info.aOrderBy[0].desc == 0;
}

Choice choiceFor(const TableDefinition& table, const sqlite3_index_info& info, std::size_t number) {
    const Index& index = table.indexes[number];
    const auto rows = static_cast<double>(std::max<quint32>(table.rowCount, 10));
    Choice choice;
    const int column = table.positionOf(index.columns.front().column);
    int same = 0;
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto& constraint = info.aConstraint[i];
        const int use = useOf(constraint.op);
        if (constraint.usable == 0 || constraint.iColumn != column || use == 0) {
            continue;
        }
        if (use == kAbove || use == kBelow) {
            choice.constraints[use == kAbove ? 1 : 2] = i;
        } else if (use == kEqual || (same == 0 && !index.ignoresNulls)) {
            choice.constraints[0] = i;
            same = use;
        }
    }
    if (choice.constraints[0] >= 0) {
        choice.constraints[1] = choice.constraints[2] = -1;
    }
    choice.isOrdered =
        isOrderedBy(info, column) && !index.columns.front().isDescending && !index.ignoresNulls;
    const double share = choice.constraints[0] >= 0 ? 1 / std::sqrt(rows)
                         : choice.constraints[1] >= 0 || choice.constraints[2] >= 0 ? 0.25
                                                                                    : 1;
    const bool isSingle = same == kEqual && index.isUnique && index.columns.size() == 1;
    choice.rows = isSingle ? 1 : static_cast<sqlite3_int64>(rows * share) + 1;
    choice.cost = static_cast<double>(choice.rows) * 2 + 10;
    choice.plan = kByIndex | static_cast<int>(number << kIndexShift) | (same & kIs);
    return choice;
}

Choice bestChoice(const TableDefinition& table, const sqlite3_index_info& info) {
    const auto rows = static_cast<double>(table.rowCount) + 10;
    Choice best;
    best.rows = static_cast<sqlite3_int64>(rows);
    best.cost = rows * 1.5 + 20;
    best.isOrdered = isOrderedBy(info, -1);
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto& constraint = info.aConstraint[i];
        if (constraint.usable != 0 && constraint.iColumn < 0 &&
            constraint.op == SQLITE_INDEX_CONSTRAINT_EQ) {
            return {kRowNumber, {i, -1, -1}, 1, 1, true};
        }
    }
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        const Index& index = table.indexes[i];
        const Column* column =
            index.columns.empty() ? nullptr : table.columnByNumber(index.columns.front().column);
        if (column == nullptr || !hasNumberKey(*column)) {
            continue;
        }
        const Choice choice = choiceFor(table, info, i);
        const bool isUseful = choice.isOrdered || choice.rows < best.rows;
        const double sorting = info.nOrderBy > 0 && !choice.isOrdered ? 1.2 : 1;
        const double bestSorting = info.nOrderBy > 0 && !best.isOrdered ? 3 : 1;
        if (isUseful && choice.cost * sorting < best.cost * bestSorting) {
            best = choice;
        }
    }
    return best;
}

}  // namespace

void choosePlan(const TableDefinition& table, sqlite3_index_info& info) {
    const Choice choice = bestChoice(table, info);
    int plan = choice.plan;
    int arguments = 0;
    for (std::size_t use = 0; use < choice.constraints.size(); ++use) {
        if (const int constraint = choice.constraints[use]; constraint >= 0) {
            info.aConstraintUsage[constraint].argvIndex = ++arguments;
            if ((plan & kKind) == kByIndex) {
                plan |= kEqual << use;
            }
        }
    }
    info.idxNum = plan;
    info.estimatedCost = choice.cost;
    info.estimatedRows = choice.rows;
    info.orderByConsumed = choice.isOrdered ? 1 : 0;
    if (choice.rows == 1) {
        info.idxFlags |= SQLITE_INDEX_SCAN_UNIQUE;
    }
}

}  // namespace varo::access
