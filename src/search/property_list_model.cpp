#include "search/property_list_model.h"

#include "platform/ui/icons.h"
#include "platform/ui/node_view.h"
#include "platform/ui/shown_text.h"

#include <QIcon>

#include <algorithm>

namespace varo {

QModelIndex PropertyListModel::add() {
    const int row = rowCount();
    beginInsertRows({}, row, row);
    const auto id = session_.add();
    endInsertRows();
    return id ? indexOf(*id) : QModelIndex();
}

void PropertyListModel::remove(qint32 id) {
    const QModelIndex index = indexOf(id);
    if (index.isValid()) {
        beginRemoveRows({}, index.row(), index.row());
        session_.remove(id);
        unsaved_.erase(id);
        endRemoveRows();
    }
}

void PropertyListModel::update(qint32 id) {
    const QModelIndex index = indexOf(id);
    emit dataChanged(index, index);
}

void PropertyListModel::setUnsaved(qint32 id, bool unsaved) {
    if (unsaved ? unsaved_.insert(id).second : unsaved_.erase(id) > 0) {
        update(id);
    }
}

qint32 PropertyListModel::idAt(const QModelIndex& index) const {
    return session_.properties()[static_cast<std::size_t>(index.row())].id;
}

QModelIndex PropertyListModel::indexOf(qint32 id) const {
    const auto& listed = session_.properties();
    const auto found = std::ranges::find(listed, id, &ListedProperty::id);
    return found == listed.end() ? QModelIndex()
                                 : index(static_cast<int>(found - listed.begin()), 0);
}

int PropertyListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(session_.properties().size());
}

int PropertyListModel::columnCount(const QModelIndex&) const {
    return 1;
}

QVariant PropertyListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const ListedProperty& property = session_.properties()[static_cast<std::size_t>(index.row())];
    const bool isUnsaved = unsaved_.contains(property.id);
    switch (role) {
        case Qt::DisplayRole:
            return isUnsaved ? property.name + QStringLiteral(" *") : property.name;
        case Qt::EditRole:
            return property.name;
        case Qt::ToolTipRole: {
            const QString condition = isUnsaved ? QStringLiteral("过滤条件修改后还没有保存")
                                      : property.filter == 0 ? QStringLiteral("没有过滤条件")
                                                             : QStringLiteral("有过滤条件");
            return ui::plainToolTip(property.name + u'\n' + condition);
        }
        case Qt::DecorationRole:
            return property.filter == 0 ? QVariant()
                                        : QVariant(ui::themeIcon(QStringLiteral("view-filter")));
        case ui::NodeView::KeyRole:
            return QStringLiteral("LvPropertyKey%1").arg(property.id);
        case kFilterRole:
            return property.filter;
        default:
            return {};
    }
}

QVariant PropertyListModel::headerData(int, Qt::Orientation orientation, int role) const {
    return orientation == Qt::Horizontal && role == Qt::DisplayRole
               ? QVariant(QStringLiteral("属性名称"))
               : QVariant();
}

Qt::ItemFlags PropertyListModel::flags(const QModelIndex& index) const {
    return QAbstractTableModel::flags(index) | Qt::ItemIsEditable;
}

bool PropertyListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !index.isValid()) {
        return false;
    }
    const qint32 id = idAt(index);
    const PropertySession::Renaming renaming = session_.rename(id, value.toString());
    if (!renaming.message.isEmpty()) {
        emit refused(renaming.message);
    }
    update(id);
    return renaming.accepted;
}

}  // namespace varo
