#include "browse/formula_list_model.h"

#include "platform/ui/node_view.h"
#include "platform/ui/shown_text.h"
#include "store/keys.h"

#include <array>

namespace varo {

namespace {

/// What a column shows, in the order of FormulaListModel::Column.
struct ColumnInfo {
    QStringView caption;
    QStringView key;
    QString (*text)(const clsFormulaInfo& formula);
};
constexpr std::array<ColumnInfo, FormulaListModel::ColumnCount> kColumns{{
    {u"公式名称", u"Head1", [](const clsFormulaInfo& formula) { return formula.FormulaName; }},
}};

}  // namespace

FormulaListModel::~FormulaListModel() {
    formulas_.Clear();
}

const clsFormulaInfo* FormulaListModel::find(qint32 id) const {
    const QString key = formulaKey(id);
    return formulas_.contains(key) ? &formulas_.Item(key) : nullptr;
}

void FormulaListModel::replace(const std::function<void(colFormulaInfo&)>& fill,
                               const QSet<qint32>& withProperty) {
    beginResetModel();
    formulas_.Clear();
    images_.clear();
    fill(formulas_);
    for (const clsFormulaInfo& formula : formulas_) {
        images_.push_back(withProperty.contains(formula.FormulaID)
                              ? FormulaImage::FormulaWithProperty
                              : FormulaImage::Formula);
    }
    endResetModel();
}

void FormulaListModel::append(const clsFormulaInfo& formula) {
    const int row = rowCount();
    beginInsertRows({}, row, row);
    formulas_.Add(formula);
    images_.push_back(FormulaImage::Formula);
    endInsertRows();
}

void FormulaListModel::remove(qint32 id) {
    const QModelIndex index = indexOf(id);
    if (!index.isValid()) {
        return;
    }
    beginRemoveRows({}, index.row(), index.row());
    formulas_.Remove(formulaKey(id));
    images_.erase(images_.begin() + index.row());
    endRemoveRows();
}

void FormulaListModel::update(qint32 id, const std::function<void(clsFormulaInfo&)>& change) {
    const QModelIndex first = indexOf(id);
    if (first.isValid()) {
        change(formulas_.Item(formulaKey(id)));
        emit dataChanged(first, first.siblingAtColumn(ColumnCount - 1));
    }
}

void FormulaListModel::setImage(qint32 id, FormulaImage image) {
    const QModelIndex index = indexOf(id);
    if (index.isValid()) {
        images_[static_cast<std::size_t>(index.row())] = image;
        emit dataChanged(index, index, {Qt::DecorationRole, Qt::AccessibleDescriptionRole});
    }
}

QModelIndex FormulaListModel::indexOf(qint32 id) const {
    const clsFormulaInfo* formula = find(id);
    int row = 0;
    for (const clsFormulaInfo& each : formulas_) {
        if (&each == formula) {
            return index(row, NameColumn);
        }
        ++row;
    }
    return {};
}

qint32 FormulaListModel::idAt(const QModelIndex& index) const {
    return formulas_.Item(index.row() + 1).FormulaID;
}

int FormulaListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(images_.size());
}

int FormulaListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant FormulaListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const clsFormulaInfo& formula = formulas_.Item(index.row() + 1);
    const QString text = kColumns[static_cast<std::size_t>(index.column())].text(formula);
    switch (role) {
        case Qt::DisplayRole:
            return ui::lineOf(text);
        case Qt::EditRole:
            return text;
        case Qt::ToolTipRole:
            return ui::plainToolTip(text);
        case Qt::DecorationRole:
            return index.column() == NameColumn
                       ? formulaIcon(images_[static_cast<std::size_t>(index.row())])
                       : QVariant();
        case Qt::AccessibleDescriptionRole:
            return locatedDescription(images_[static_cast<std::size_t>(index.row())] ==
                                      FormulaImage::FormulaLocated);
        case ui::NodeView::KeyRole:
            return formula.NodeKey;
        default:
            return {};
    }
}

Qt::ItemFlags FormulaListModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    const bool editable = index.isValid() && index.column() == NameColumn && renamer_;
    return editable ? flags | Qt::ItemIsEditable : flags;
}

bool FormulaListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !flags(index).testFlag(Qt::ItemIsEditable)) {
        return false;
    }
    const qint32 id = idAt(index);
    const QString label = value.toString();
    if (label == find(id)->FormulaName) {
        return true;
    }
    if (!renamer_(id, label)) {
        return false;
    }
    update(id, [&](clsFormulaInfo& formula) { formula.FormulaName = label; });
    return true;
}

QVariant FormulaListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (section >= 0 && section < ColumnCount && orientation == Qt::Horizontal) {
        const ColumnInfo& column = kColumns[static_cast<std::size_t>(section)];
        if (role == Qt::DisplayRole) {
            return column.caption.toString();
        }
        if (role == ui::NodeView::KeyRole) {
            return column.key.toString();
        }
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}

}  // namespace varo
