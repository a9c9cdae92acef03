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
