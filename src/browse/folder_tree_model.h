#pragma once

#include "browse/folder_tree.h"

#include <QAbstractItemModel>
#include <QHash>

#include <functional>

namespace varo {

/// The folder tree as a model for a tree view. Answers the keys of nodes under
/// ui::NodeView::KeyRole. The labels of folders can be edited once a renamer is set.
class FolderTreeModel : public QAbstractItemModel {
    Q_OBJECT

  public:
    enum Column { NameColumn, ColumnCount };

    using QAbstractItemModel::QAbstractItemModel;

    const FolderTree& tree() const { return tree_; }

    void clear();
    /// As FolderTree; views are told.
    QModelIndex addLibrary(int number, const QString& text);
    void addFolders(const QModelIndex& parent, FolderRows rows);
    QModelIndex appendFolder(const QModelIndex& parent, qint32 id, const QString& text);
    void removeFolder(const QModelIndex& index);
    void removeFolders(const QModelIndex& parent);
    void setImages(const QModelIndex& index, FolderTree::Images images);

    /// Adds a text to the tool tip of a library.
    void setNote(const QModelIndex& library, const QString& text);

    /// Stores the new label of a folder; false leaves the label as it was.
    using Renamer = std::function<bool(const NodeId& folder, const QString& label)>;
    void setRenamer(Renamer renamer) { renamer_ = std::move(renamer); }

    void squeeze() { tree_.squeeze(); }

    /// Index of a node; invalid for FolderTree::kNone.
    QModelIndex indexOf(FolderTree::Node node) const;
    /// Index of the node with this identifier; invalid when there is none.
    QModelIndex find(const NodeId& id) const { return indexOf(tree_.find(id)); }
    /// Identifier of the node at `index`; an invalid one for an invalid index.
    NodeId idOf(const QModelIndex& index) const {
        return index.isValid() ? tree_.id(nodeOf(index)) : NodeId{};
    }
    /// The node at a valid index.
    static FolderTree::Node nodeOf(const QModelIndex& index) {
        return static_cast<FolderTree::Node>(index.internalId());
    }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  private:
    QVariant nameData(FolderTree::Node node, int role) const;
    QString toolTip(FolderTree::Node node) const;

    FolderTree tree_;
    QHash<FolderTree::Node, QString> notes_;
    Renamer renamer_;
};

}  // namespace varo
