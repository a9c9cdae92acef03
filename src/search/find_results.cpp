#include "search/find_results.h"

#include "browse/node_images.h"
#include "platform/ui/shown_text.h"

namespace varo {

FindResults::FindResults(LibraryTree& tree) : tree_(tree) {
    connect(&tree.model(), &QAbstractItemModel::modelReset, this, [this] {
        clear();
        emit librariesChanged();
    });
}

void FindResults::append(const FindHits& hits) {
    if (hits.size() == 0) {
        return;
    }
    beginInsertRows({}, count(), count() + static_cast<int>(hits.size()) - 1);
    hits_.append(hits);
    endInsertRows();
    emit changed();
}

void FindResults::clear() {
    beginResetModel();
    hits_.clear();
    located_ = -1;
    endResetModel();
    emit changed();
}

void FindResults::setLocated(int position) {
    located_ = position;
    emit changed();
}

QString FindResults::pathOf(const NodeId& node) const {
    static const QString separator = QStringLiteral(" › ");
    if (!tree_.contains(node)) {
        return tree_.text(nodeOf(node.library, 0)) + separator + u'…';
    }
    QStringList texts;
    for (NodeId above = node; above.isValid(); above = tree_.parentOf(above)) {
        texts.prepend(tree_.text(above));
    }
    return texts.join(separator);
}

int FindResults::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

int FindResults::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 1;
}

QVariant FindResults::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const FindHit found = hit(index.row());
    switch (role) {
        case Qt::DisplayRole:
            return found.name;
        case Qt::DecorationRole:
            return found.kind == NodeTypeFolder ? nodeIcon(NodeImage::Folder)
                                                : formulaIcon(FormulaImage::Formula);
        case Qt::ToolTipRole:
            return ui::plainToolTip(ui::lineOf(found.name) + u'\n' + pathOf(found.parent()));
        case Qt::AccessibleDescriptionRole:
        case PlaceRole:
            return pathOf(found.parent());
        case KeyRole:
            return found.key();
        case TagRole:
            return found.tag();
        default:
            return {};
    }
}

QVariant FindResults::headerData(int section, Qt::Orientation orientation, int role) const {
    const bool isHead = section == 0 && orientation == Qt::Horizontal;
    return isHead && role == Qt::DisplayRole ? QStringLiteral("名称") : QVariant();
}

}  // namespace varo
