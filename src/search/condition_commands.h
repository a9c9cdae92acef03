#pragma once

#include "library/condition_tree.h"

#include <optional>

namespace varo {

/// What a user can do with a condition.
enum class ConditionCommand {
    AddComparison,
    AddAnd,
    AddOr,
    AddNot,
    WrapAnd,
    WrapOr,
    WrapNot,
    Unwrap,
    Remove,
    MoveUp,    ///< before the node in front of it
    MoveDown,  ///< behind the node after it
    MoveOut,   ///< behind its group
    MoveIn,    ///< into the group beside it, the one in front of it first
    Clear,
    Undo,
    Redo,
    Try,
};

/// A condition after an edit, and the node that is selected then.
struct EditedCondition {
    ConditionTree tree;
    ConditionPath selected;
};

/// Whether `command` changes `tree` while the node at `current` is selected, an empty path for
/// none; false for Undo, Redo and Try.
bool canEdit(ConditionCommand command, const ConditionTree& tree, const ConditionPath& current);

/// What `command` makes of `tree` then; nothing where canEdit() says that it cannot be done. A new
/// node goes into a group and behind a comparison, and behind a NOT that has its child already.
std::optional<EditedCondition> editedBy(ConditionCommand command, const ConditionTree& tree,
                                        const ConditionPath& current);

/// Whether the node at `from` can be dropped into the group at `parent`, or among the roots. NOT
/// takes one child at most.
bool canDrop(const ConditionTree& tree, const ConditionPath& from, const ConditionPath& parent);

/// What such a drop makes of `tree`, before the child at `position`, or, when that is -1, at the
/// end: on the roots that is the end of a root that is a group.
std::optional<EditedCondition> editedByDrop(const ConditionTree& tree, const ConditionPath& from,
                                            const ConditionPath& parent, int position);

}  // namespace varo
