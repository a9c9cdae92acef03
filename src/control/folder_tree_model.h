#pragma once

#include "control/folder_tree.h"

#include <QAbstractItemModel>

namespace varo {

/// The folder tree as a model for a tree view. One column; answers keys under
/// ui::NodeView::KeyRole.
class FolderTreeModel : public QAbstractItemModel {
    Q_OBJECT

  public:
    using QAbstractItemModel::QAbstractItemModel;

    const FolderTree& tree() const { return tree_; }

    void clear();
    /// As FolderTree; views are told.
    QModelIndex addLibrary(const QString& key, const QString& text);
    void addFolders(const QModelIndex& parent, FolderRows rows);
    void setImages(const QModelIndex& index, FolderTree::Images images);

    void squeeze() { tree_.squeeze(); }

    /// Index of a node; invalid for FolderTree::None.
    QModelIndex indexOf(FolderTree::Node node) const;
    /// Index of the node with this key; invalid when there is none.
    QModelIndex find(QStringView key) const { return indexOf(tree_.find(key)); }
    /// The node behind a valid index.
    static FolderTree::Node nodeOf(const QModelIndex& index) {
        return static_cast<FolderTree::Node>(index.internalId());
    }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    FolderTree tree_;
};

}  // namespace varo
