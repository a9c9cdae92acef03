#pragma once

#include "library/condition_check.h"
#include "library/condition_trial.h"

#include <QAbstractItemModel>

#include <functional>
#include <map>

namespace varo {

/// A condition as a model for a tree view: groups in words, comparisons as name, comparison and
/// constant, and beside them what a trial showed; faults are marked at their nodes. It changes
/// nothing itself: what the user edits or drags is told, and comes back with show().
class ConditionModel : public QAbstractItemModel {
    Q_OBJECT

  public:
    enum Column { SubjectColumn, ComparisonColumn, ConstantColumn, OutcomeColumn, ColumnCount };

    using QAbstractItemModel::QAbstractItemModel;

    /// Shows `tree` without marks, which stay only where the tree is the one that is shown already.
    void show(const ConditionTree& tree);
    const ConditionTree& tree() const { return tree_; }

    /// Whether nodes can be edited and dragged.
    void setEditable(bool editable) { editable_ = editable; }

    /// Marks the nodes at which something is wrong, in the place of those marked before.
    void showFaults(const std::vector<ConditionFault>& faults);
    /// Marks each node with what the trial showed.
    void showTrial(const ConditionTrial& trial);

    /// The node at a valid index.
    const ConditionNode& nodeAt(const QModelIndex& index) const;
    /// The place of the node at an index; empty for an invalid one.
    ConditionPath pathOf(const QModelIndex& index) const;
    /// Index of the node at `path`; invalid when there is none.
    QModelIndex indexOf(const ConditionPath& path) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

  signals:
    void termEdited(const ConditionPath& path, const ComparisonTerm& term);
    void groupTypeEdited(const ConditionPath& path, ConditionType type);
    /// The node at `from` was dropped into the group at `parent`, or among the roots, before the
    /// child at `position`; -1 for a place that is up to the receiver.
    void dropped(const ConditionPath& from, const ConditionPath& parent, int position);

  private:
    struct Entry {
        const ConditionNode* node;
        int parent;  ///< number of an entry; -1 for a root
        int row;
        std::vector<int> children = {};
    };

    void addEntries(const std::vector<ConditionNode>& nodes, int parent);
    const std::vector<int>& childrenOf(const QModelIndex& parent) const;
    QString textOf(const QModelIndex& index) const;
    QVariant foreground(const QModelIndex& index) const;
    QString outcome(const QModelIndex& index) const;
    void marksChanged();

    ConditionTree tree_;
    std::vector<Entry> entries_;  ///< each node before those below it
    std::vector<int> roots_;
    std::map<ConditionPath, QStringList> faults_;
    std::map<ConditionPath, ConditionMark> marks_;
    bool editable_ = false;
};

}  // namespace varo
