#include "formula/data_table_model.h"

#include "library/limits.h"
#include "platform/ui/wait_cursor.h"

namespace varo {

DataTableModel::DataTableModel(DataTable& table, QObject* parent)
    : QAbstractTableModel(parent), table_(table) {}

void DataTableModel::reset() {
    beginResetModel();
    listing_ = {};
    failureTold_ = table_.hasFailed();
    rows_ = table_.rowCount();
    endResetModel();
}

void DataTableModel::setFilter(const QString& text) {
    if (text != listing_.filter) {
        listing_.filter = text;
        list();
    }
}

void DataTableModel::sort(int column, Qt::SortOrder order) {
    const bool sorts = column >= 0 && column < table_.columnCount() && table_.isShown(column);
    listing_.sortColumn = sorts ? column : -1;
    listing_.descending = order == Qt::DescendingOrder;
    list();
}

void DataTableModel::list() {
    const ui::clsWaitCursor waiting;
    beginResetModel();
    failureTold_ = false;
    table_.list(listing_);
    rows_ = table_.rowCount();
    endResetModel();
    tellFailure();
}

void DataTableModel::loadMore() {
    table_.loadMore();
    if (table_.rowCount() > rows_) {
        beginInsertRows({}, rows_, table_.rowCount() - 1);
        rows_ = table_.rowCount();
        endInsertRows();
    }
    tellFailure();
}

void DataTableModel::tellFailure() const {
    if (table_.hasFailed() && !failureTold_) {
        failureTold_ = true;
        emit readFailed();
    }
}

int DataTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

int DataTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : table_.columnCount();
}

QVariant DataTableModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole && role != Qt::TextAlignmentRole) {
        return {};
    }
    const DataCell& cell = table_.cell(index.row(), index.column());
    tellFailure();
    if (role == Qt::TextAlignmentRole) {
        return QVariant(Qt::AlignVCenter | (cell.isNumber ? Qt::AlignRight : Qt::AlignLeft));
    }
    const bool isCut = cell.text.size() > kTextLimit;
    return isCut ? cell.text.first(kTextLimit) + u'…' : cell.text;
}

QVariant DataTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Vertical) {
        return role == Qt::DisplayRole ? QVariant(section + 1) : QVariant();
    }
    if (role == Qt::ToolTipRole && !table_.isShown(section)) {
        return QStringLiteral("日期、是/否和二进制的值不显示");
    }
    return role == Qt::DisplayRole ? QVariant(table_.columnName(section)) : QVariant();
}

}  // namespace varo
