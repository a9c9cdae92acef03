#include "control/folder_tree_model.h"

#include "platform/ui/icons.h"
#include "platform/ui/node_view.h"
#include "platform/ui/tool_tip.h"

namespace varo {

void FolderTreeModel::clear() {
    beginResetModel();
    tree_.clear();
    endResetModel();
}

QModelIndex FolderTreeModel::addLibrary(const QString& key, const QString& text) {
    const int row = tree_.libraryCount();
    beginInsertRows({}, row, row);
    const FolderTree::Node node = tree_.addLibrary(key, text);
    endInsertRows();
    return indexOf(node);
}

void FolderTreeModel::addFolders(const QModelIndex& parent, FolderRows rows) {
    bool inserting = false;
    tree_.addFolders(nodeOf(parent), std::move(rows), [&](int count) {
        inserting = count > 0;
        if (inserting) {
            beginInsertRows(parent, 0, count - 1);
        }
    });
    if (inserting) {
        endInsertRows();
    }
}

void FolderTreeModel::setImages(const QModelIndex& index, FolderTree::Images images) {
    tree_.setImages(nodeOf(index), images);
    emit dataChanged(index, index, {Qt::DecorationRole, ui::NodeView::SelectedIconRole});
}

QModelIndex FolderTreeModel::indexOf(FolderTree::Node node) const {
    return node == FolderTree::None ? QModelIndex()
                                    : createIndex(tree_.row(node), 0, quintptr{node});
}

QModelIndex FolderTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (column != 0 || row < 0 || row >= rowCount(parent)) {
        return {};
    }
    return indexOf(parent.isValid() ? tree_.child(nodeOf(parent), row) : tree_.library(row));
}

QModelIndex FolderTreeModel::parent(const QModelIndex& index) const {
    return index.isValid() ? indexOf(tree_.parent(nodeOf(index))) : QModelIndex();
}

int FolderTreeModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? tree_.childCount(nodeOf(parent)) : tree_.libraryCount();
}

int FolderTreeModel::columnCount(const QModelIndex&) const {
    return 1;
}

QVariant FolderTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const FolderTree::Node node = nodeOf(index);
    const auto icon = [](quint8 image) { return ui::nodeIcon(static_cast<ui::NodeImage>(image)); };
    switch (role) {
        case Qt::DisplayRole:
            // The rows are all one line high.
            return tree_.text(node).replace(u'\n', u' ');
        case Qt::ToolTipRole:
            return ui::plainToolTip(tree_.text(node));
        case Qt::DecorationRole:
            return icon(tree_.images(node).image);
        case ui::NodeView::SelectedIconRole:
            return icon(tree_.images(node).selectedImage);
        case ui::NodeView::KeyRole:
            return tree_.key(node);
        default:
            return {};
    }
}

}  // namespace varo
