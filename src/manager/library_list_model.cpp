#include "manager/library_list_model.h"

#include "browse/node_images.h"
#include "library/library_files.h"
#include "library/library_list.h"
#include "platform/ui/dropped_files.h"
#include "platform/ui/shown_text.h"

#include <utility>

namespace varo {

namespace {

/// The format under which the selected libraries are dragged.
const auto kDraggedLibraries = QStringLiteral("application/x-varo-libraries");

}  // namespace

void LibraryListModel::refill() {
    beginResetModel();
    // A library that was removed and is added again is looked at again.
    const QHash<QString, QString> known = std::exchange(reasons_, {});
    for (const clsFormulaDB& library : libraries_) {
        if (const auto reason = known.constFind(pathOf(library)); reason != known.cend()) {
            reasons_.insert(reason.key(), *reason);
        }
    }
    endResetModel();
}

QString LibraryListModel::reasonOf(const clsFormulaDB& library) const {
    const QString path = pathOf(library);
    auto reason = reasons_.constFind(path);
    if (reason == reasons_.cend()) {
        reason = reasons_.insert(path, whyNotOpened(library));
    }
    return *reason;
}

QModelIndex LibraryListModel::indexOf(const QString& key) const {
    for (int row = 0; row < libraries_.Count(); ++row) {
        if (libraries_.Item(row + 1).NodeKey == key) {
            return index(row, NameColumn);
        }
    }
    return {};
}

int LibraryListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : libraries_.Count();
}

int LibraryListModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

QVariant LibraryListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const clsFormulaDB& library = libraryAt(index);
    const bool isName = index.column() == NameColumn;
    switch (role) {
        case Qt::DisplayRole:
            return ui::lineOf(isName ? library.FormulaNodeText : pathOf(library));
        case Qt::EditRole:
            return isName ? library.FormulaNodeText : pathOf(library);
        case Qt::ToolTipRole: {
            const QString reason = reasonOf(library);
            return ui::plainToolTip(pathOf(library) + (reason.isEmpty() ? reason : u'\n' + reason));
        }
        case Qt::DecorationRole:
            return isName ? nodeIcon(reasonOf(library).isEmpty() ? NodeImage::Library
                                                                 : NodeImage::LibraryUnreadable)
                          : QVariant();
        default:
            return {};
    }
}

QVariant LibraryListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    return section == NameColumn ? QStringLiteral("名称") : QStringLiteral("路径");
}

Qt::ItemFlags LibraryListModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        return Qt::ItemIsDropEnabled;  // between the libraries, not on one
    }
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index) | Qt::ItemIsDragEnabled;
    return index.column() == NameColumn && renamer_ ? flags | Qt::ItemIsEditable : flags;
}

bool LibraryListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !flags(index).testFlag(Qt::ItemIsEditable)) {
        return false;
    }
    const QString text = value.toString();
    if (text == libraryAt(index).FormulaNodeText) {
        return true;
    }
    if (!renamer_(keyAt(index), text)) {
        return false;
    }
    emit dataChanged(index, index);
    return true;
}

QStringList LibraryListModel::mimeTypes() const {
    return {kDraggedLibraries};
}

Qt::DropActions LibraryListModel::supportedDropActions() const {
    return Qt::MoveAction | Qt::CopyAction;
}

bool LibraryListModel::canDropMimeData(const QMimeData* dragged, Qt::DropAction, int, int,
                                       const QModelIndex&) const {
    return dragged->hasFormat(kDraggedLibraries) || !ui::droppedFiles(*dragged).isEmpty();
}

bool LibraryListModel::dropMimeData(const QMimeData* dragged, Qt::DropAction, int row, int,
                                    const QModelIndex&) {
    const QStringList files = ui::droppedFiles(*dragged);
    const int before = (row < 0 ? libraries_.Count() : row) + 1;
    // The list must not change, and no message may open, while the drop is under way.
    QMetaObject::invokeMethod(
        this,
        [this, files, before] {
            if (files.isEmpty()) {
                emit librariesDropped(before);
            } else {
                emit filesDropped(files);
            }
        },
        Qt::QueuedConnection);
    return true;
}

}  // namespace varo
