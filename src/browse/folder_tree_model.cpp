#include "browse/folder_tree_model.h"

#include "platform/ui/node_view.h"
#include "platform/ui/shown_text.h"

namespace varo {

void FolderTreeModel::clear() {
    beginResetModel();
    tree_.clear();
    notes_.clear();
    endResetModel();
}

QModelIndex FolderTreeModel::addLibrary(int number, const QString& text) {
    const int row = tree_.libraryCount();
    beginInsertRows({}, row, row);
    const FolderTree::Node node = tree_.addLibrary(number, text);
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

QModelIndex FolderTreeModel::appendFolder(const QModelIndex& parent, qint32 id,
                                          const QString& text) {
    const int row = rowCount(parent);
    beginInsertRows(parent, row, row);
    const FolderTree::Node node = tree_.appendFolder(nodeOf(parent), id, text);
    endInsertRows();
    return indexOf(node);
}

void FolderTreeModel::removeFolder(const QModelIndex& index) {
    beginRemoveRows(index.parent(), index.row(), index.row());
    tree_.removeFolder(nodeOf(index));
    endRemoveRows();
}

void FolderTreeModel::removeFolders(const QModelIndex& parent) {
    if (const int count = rowCount(parent); count > 0) {
        beginRemoveRows(parent, 0, count - 1);
        tree_.removeFolders(nodeOf(parent));
        endRemoveRows();
    }
}

void FolderTreeModel::setImages(const QModelIndex& index, FolderTree::Images images) {
    tree_.setImages(nodeOf(index), images);
    emit dataChanged(
        index, index,
        {Qt::DecorationRole, ui::NodeView::SelectedIconRole, Qt::AccessibleDescriptionRole});
}

void FolderTreeModel::setNote(const QModelIndex& library, const QString& text) {
    notes_.insert(nodeOf(library), text);
    emit dataChanged(library, library, {Qt::ToolTipRole});
}

QModelIndex FolderTreeModel::indexOf(FolderTree::Node node) const {
    return node == FolderTree::kNone ? QModelIndex()
                                     : createIndex(tree_.row(node), NameColumn, quintptr{node});
}

QModelIndex FolderTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (column != NameColumn || row < 0 || row >= rowCount(parent)) {
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
    return ColumnCount;
}

QVariant FolderTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    switch (static_cast<Column>(index.column())) {
        case NameColumn:
            return nameData(nodeOf(index), role);
        case ColumnCount:
            break;
    }
    return {};
}

QString FolderTreeModel::toolTip(FolderTree::Node node) const {
    const QString note = notes_.value(node);
    return note.isEmpty() ? tree_.text(node) : tree_.text(node) + u'\n' + note;
}

QVariant FolderTreeModel::nameData(FolderTree::Node node, int role) const {
    switch (role) {
        case Qt::DisplayRole:
            return ui::lineOf(tree_.text(node));
        case Qt::EditRole:
            return tree_.text(node);
        case Qt::ToolTipRole:
            return ui::plainToolTip(toolTip(node));
        case Qt::DecorationRole:
            return nodeIcon(static_cast<NodeImage>(tree_.images(node).image));
        case ui::NodeView::SelectedIconRole:
            return nodeIcon(static_cast<NodeImage>(tree_.images(node).selectedImage));
        case Qt::AccessibleDescriptionRole:
            return locatedDescription(static_cast<NodeImage>(tree_.images(node).image) ==
                                      NodeImage::FolderLocated);
        case ui::NodeView::KeyRole:
            return keyOf(tree_.id(node));
        default:
            return {};
    }
}

Qt::ItemFlags FolderTreeModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    const bool editable = index.isValid() && !tree_.isLibrary(nodeOf(index)) && renamer_;
    return editable ? flags | Qt::ItemIsEditable : flags;
}

bool FolderTreeModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !flags(index).testFlag(Qt::ItemIsEditable)) {
        return false;
    }
    const FolderTree::Node node = nodeOf(index);
    const QString label = value.toString();
    if (label == tree_.text(node)) {
        return true;
    }
    if (!renamer_(tree_.id(node), label)) {
        return false;
    }
    tree_.setText(node, label);
    emit dataChanged(index, index, {Qt::DisplayRole, Qt::EditRole, Qt::ToolTipRole});
    return true;
}

}  // namespace varo
