#pragma once

#include "library/condition_tree.h"

#include <QStringList>

namespace varo {

/// A stored node of a condition.
struct FilterNodeRow {
    qint32 id = 0;
    qint32 parent = 0;
    qint32 type = 0;

    bool operator==(const FilterNodeRow&) const = default;
};

/// The stored comparison of the node with the same number.
struct FilterTermRow {
    qint32 id = 0;
    ComparisonTerm term;
};

struct FilterRows {
    std::vector<FilterNodeRow> nodes;  ///< in the order of their numbers
    std::vector<FilterTermRow> terms;  ///< in the order of their numbers
    bool isCut = false;                ///< there are more rows than these
};

/// A condition as it is stored.
struct StoredCondition {
    /// What is evaluated, also in shapes that conditionFaults() finds fault with. Nodes that are
    /// deeper than the evaluation goes are left out.
    ConditionTree tree;
    /// Sentences for the user on what is stored otherwise than saving does it, but for what
    /// conditionFaults() says of `tree`: rows that no root leads to, numbers used twice, a node
    /// inside itself. Empty when there is nothing of the kind.
    QStringList remarks;
    /// False when `tree` is not all of what the evaluation goes through: it is deeper, contains
    /// itself, or has more than kMaxConditionNodes nodes. It can then be shown and replaced, not
    /// edited.
    bool isWhole = true;
};

/// Puts the rows of one filter together, following them as the evaluation does.
StoredCondition conditionFromRows(const FilterRows& rows);

/// The rows in which `tree`, which must be free of faults, is stored: numbers from `firstId` up,
/// each node before those below it. `firstId` and what follows must fit 32 bits.
FilterRows conditionToRows(const ConditionTree& tree, qint32 firstId);

}  // namespace varo
