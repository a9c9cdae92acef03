#pragma once

#include "library/comparison.h"

#include <QString>

#include <optional>
#include <vector>

namespace varo {

/// The kinds of nodes of a condition; the numbers are those stored. A stored node can have another
/// number: it has no value of its own then.
enum class ConditionType : qint32 { And = 1, Or = 2, Not = 3, Comparison = 4 };

/// True for AND, OR and NOT.
constexpr bool isGroupType(ConditionType type) {
    return type == ConditionType::And || type == ConditionType::Or || type == ConditionType::Not;
}

/// One comparison: the host's value of the property `name`, the constant, and how.
struct ComparisonTerm {
    QString name;
    qint32 type = CompareEqual;  ///< a CompareType, or another number that is stored
    QString constant;
    QString table;         ///< stored without being evaluated
    qint32 fieldType = 0;  ///< stored without being evaluated

    bool operator==(const ComparisonTerm&) const = default;
};

/// A node of a condition and everything below it.
struct ConditionNode {
    ConditionType type = ConditionType::Comparison;
    ComparisonTerm term = {};  ///< of a comparison
    bool hasTerm = true;       ///< false: a stored comparison without its term; it has no value
    std::vector<ConditionNode> children = {};  ///< of a group

    bool isGroup() const { return isGroupType(type); }
    bool operator==(const ConditionNode&) const = default;
};

ConditionNode groupNode(ConditionType type, std::vector<ConditionNode> children = {});
ConditionNode comparisonNode(const QString& name, qint32 type, const QString& constant);

/// Most nodes that a condition is read and saved with.
inline constexpr int kMaxConditionNodes = 5000;

/// The place of a node: its position, from 0, among the roots, then among the children of that
/// root, and so on. Empty: the condition as a whole.
using ConditionPath = std::vector<int>;

/// The place of the group around the node at `path`, which must not be empty.
ConditionPath parentOf(ConditionPath path);

/// A condition: a value, which is copied to keep a state for undo (see ConditionHistory). What is
/// edited has no root or one; what is stored can have several, of which the last decides.
///
/// Every edit leaves the condition as it was and returns nothing, or false, when a path leads
/// nowhere or what is asked for cannot be.
struct ConditionTree {
    std::vector<ConditionNode> roots;

    bool isEmpty() const { return roots.empty(); }
    bool operator==(const ConditionTree&) const = default;

    /// How many nodes there are in all.
    int size() const;

    /// The node at `path`; null for the empty path and where there is none.
    const ConditionNode* find(const ConditionPath& path) const;
    /// How many children the node at `path` has; how many roots there are for the empty path.
    int childCount(const ConditionPath& path) const;

    /// Adds `node` as the child at `position`, from 0 to the number of children, of the group at
    /// `parent`, and returns its place. With the empty path it becomes the root; if there is one
    /// root already, that and `node`, in the order that `position` says, become the children of a
    /// new AND group; to several roots it is added as another one.
    std::optional<ConditionPath> insert(const ConditionPath& parent, int position,
                                        ConditionNode node);

    /// Removes the node at `path` with everything below it.
    bool remove(const ConditionPath& path);

    /// Takes the node at `from` away and inserts it into `parent`, where `position` counts the
    /// children as they are before; both as in insert(). Returns the new place. A node cannot be
    /// moved into itself.
    std::optional<ConditionPath> move(const ConditionPath& from, const ConditionPath& parent,
                                      int position);

    /// Puts a new group of `type` in the place of the node at `path`, with that node as its child.
    bool wrap(const ConditionPath& path, ConditionType type);

    /// Puts the children of the group at `path` in its place. The only root can be unwrapped when
    /// that leaves one root at most.
    bool unwrap(const ConditionPath& path);
    bool canUnwrap(const ConditionPath& path) const;

    /// Makes the group at `path` another kind of group.
    bool setGroupType(const ConditionPath& path, ConditionType type);

    /// Changes what the comparison at `path` compares.
    bool setTerm(const ConditionPath& path, const ComparisonTerm& term);
};

/// The states of a condition that is being edited.
class ConditionHistory {
  public:
    /// Begins with `tree`; nothing can be undone.
    void reset(ConditionTree tree);

    const ConditionTree& current() const { return states_[position_]; }

    /// Makes `tree` the current state, from which nothing can be redone. A tree equal to the
    /// current one changes nothing.
    void push(ConditionTree tree);

    bool canUndo() const { return position_ > 0; }
    bool canRedo() const { return position_ + 1 < states_.size(); }
    /// Each does nothing where it cannot.
    void undo();
    void redo();

  private:
    std::vector<ConditionTree> states_ = {{}};
    std::size_t position_ = 0;
};

}  // namespace varo
