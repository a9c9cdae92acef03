#pragma once

#include "library/condition_tree.h"

namespace varo {

/// What is wrong with a condition.
enum class ConditionFaultKind {
    Empty,              ///< it has no nodes
    SeveralRoots,       ///< only the last one would decide
    TooLarge,           ///< more than kMaxConditionNodes nodes
    UnknownType,        ///< a node that is neither group nor comparison
    EmptyGroup,         ///< a group without children
    NotWithoutOne,      ///< NOT with more than one child
    TooDeep,            ///< deeper than the evaluation goes
    NoTerm,             ///< a stored comparison without its term
    NoName,             ///< no property is named
    NoNumber,           ///< numbers are compared, and the constant starts with none
    MoreThanNumber,     ///< numbers are compared, and the constant goes on behind its number
    UnknownComparison,  ///< none of the eight
    NeverHolds,         ///< blanks around a text, which values are compared without
    TooLong,            ///< a text of a term over kTextLimit characters
    NotStorable,        ///< a text of a term that no file takes as it stands
};

struct ConditionFault {
    ConditionPath place;  ///< empty: the condition as a whole
    ConditionFaultKind kind;
    QString text;  ///< a sentence for the user

    bool operator==(const ConditionFault&) const = default;
};

/// Whether a text with this fault (see condition_text.h) is read all the same, with a warning. The
/// editor saves no condition with any fault.
bool isWarning(ConditionFaultKind kind);

/// Everything that is wrong with `tree`, from top to bottom; empty when it can be saved and is then
/// evaluated as it stands.
std::vector<ConditionFault> conditionFaults(const ConditionTree& tree);

}  // namespace varo
