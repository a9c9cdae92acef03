#include "control/formula_list_model.h"

#include "platform/ui/node_view.h"
#include "platform/ui/tool_tip.h"

namespace varo {

FormulaListModel::FormulaListModel(const colFormulaInfo& formulas, QObject* parent)
    : QAbstractTableModel(parent), formulas_(formulas) {}

void FormulaListModel::beginReplace() {
    beginResetModel();
    images_.clear();
}

void FormulaListModel::endReplace(std::vector<ui::FormulaImage> images) {
    images_ = std::move(images);
    endResetModel();
}

void FormulaListModel::beginAppend() {
    const int row = rowCount();
    beginInsertRows({}, row, row);
}

void FormulaListModel::endAppend(ui::FormulaImage image) {
    images_.push_back(image);
    endInsertRows();
}

void FormulaListModel::beginRemove(int row) {
    removedRow_ = row;
    beginRemoveRows({}, row, row);
}

void FormulaListModel::endRemove() {
    images_.erase(images_.begin() + removedRow_);
    endRemoveRows();
}

void FormulaListModel::setImage(const QModelIndex& index, ui::FormulaImage image) {
    images_[static_cast<std::size_t>(index.row())] = image;
    emit dataChanged(index, index, {Qt::DecorationRole});
}

QModelIndex FormulaListModel::find(const QString& key) const {
    if (!formulas_.contains(key)) {
        return {};
    }
    int row = 0;
    for (const clsFormulaInfo& formula : formulas_) {
        if (formula.NodeKey == key) {
            return index(row, 0);
        }
        ++row;
    }
    return {};
}

int FormulaListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(images_.size());
}

int FormulaListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 1;
}

QVariant FormulaListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const clsFormulaInfo& formula = formulas_.Item(index.row() + 1);
    switch (role) {
        case Qt::DisplayRole:
            // The rows are all one line high.
            return QString(formula.FormulaName).replace(u'\n', u' ');
        case Qt::EditRole:
            return formula.FormulaName;
        case Qt::ToolTipRole:
            return ui::plainToolTip(formula.FormulaName);
        case Qt::DecorationRole:
            return ui::formulaIcon(images_[static_cast<std::size_t>(index.row())]);
        case ui::NodeView::KeyRole:
            return formula.NodeKey;
        default:
            return {};
    }
}

Qt::ItemFlags FormulaListModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return index.isValid() && renamer_ ? flags | Qt::ItemIsEditable : flags;
}

bool FormulaListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !flags(index).testFlag(Qt::ItemIsEditable)) {
        return false;
    }
    const clsFormulaInfo& formula = formulas_.Item(index.row() + 1);
    const QString label = value.toString();
    if (label == formula.FormulaName) {
        return true;
    }
    if (!renamer_(formula.NodeKey, label)) {
        return false;
    }
    emit dataChanged(index, index, {Qt::DisplayRole, Qt::EditRole, Qt::ToolTipRole});
    return true;
}

QVariant FormulaListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (section == 0 && orientation == Qt::Horizontal) {
        if (role == Qt::DisplayRole) {
            return QStringLiteral("公式名称");
        }
        if (role == ui::NodeView::KeyRole) {
            return QStringLiteral("Head1");
        }
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}

}  // namespace varo
