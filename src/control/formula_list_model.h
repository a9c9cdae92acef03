#pragma once

#include "platform/ui/icons.h"
#include "store/collections.h"

#include <QAbstractTableModel>

#include <vector>

namespace varo {

/// The listed formulas as a model for a list in report view: one column, "公式名称", an item for
/// each record of the collection, in its order. Answers keys under ui::NodeView::KeyRole.
class FormulaListModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    /// `formulas` must outlive the model.
    explicit FormulaListModel(const colFormulaInfo& formulas, QObject* parent = nullptr);

    /// The records are about to be replaced as a whole, until endReplace().
    void beginReplace();
    /// `images` holds the picture of each record, in order.
    void endReplace(std::vector<ui::FormulaImage> images);

    void setImage(const QModelIndex& index, ui::FormulaImage image);

    /// Index of the item with this key; invalid when there is none.
    QModelIndex find(const QString& key) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    const colFormulaInfo& formulas_;
    std::vector<ui::FormulaImage> images_;
};

}  // namespace varo
