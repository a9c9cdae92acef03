#pragma once

#include "library/condition_tree.h"
#include "library/property_source.h"

#include <QStringList>

#include <map>
#include <optional>

namespace varo {

/// What the trial of a condition showed at one node.
struct ConditionMark {
    bool holds = false;
    QString value;  ///< of a comparison: what the host gave, blanks around removed
};

struct ConditionTrial {
    bool holds = false;  ///< the condition as a whole; false when it has no nodes
    std::map<ConditionPath, ConditionMark> marks;  ///< one for each node
};

/// The names of properties that `tree` asks for, each once, in the order of their first use.
QStringList namesIn(const ConditionTree& tree);

/// Evaluates `tree` as Condition evaluates what is stored. Nothing, without asking the host, for
/// one that is nested deeper than Condition goes, or is too large or has texts too long to be known
/// whole (see readFilterRows()). The host is asked for the value of each
/// name once, before anything is evaluated; it may do anything meanwhile, `tree` is a copy.
std::optional<ConditionTrial> tryCondition(ConditionTree tree, PropertySource& properties);

}  // namespace varo
