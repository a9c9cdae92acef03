#pragma once

#include "platform/ui/icons.h"
#include "store/collections.h"

#include <QAbstractTableModel>

#include <functional>
#include <vector>

namespace varo {

/// The listed formulas as a model for a list in report view: one column, "公式名称", an item for
/// each record of the collection, in its order. Answers keys under ui::NodeView::KeyRole. The
/// labels can be edited once there is somebody who stores them.
class FormulaListModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    /// `formulas` must outlive the model.
    explicit FormulaListModel(const colFormulaInfo& formulas, QObject* parent = nullptr);

    /// The records are about to be replaced as a whole, until endReplace().
    void beginReplace();
    /// `images` holds the picture of each record, in order.
    void endReplace(std::vector<ui::FormulaImage> images);

    /// A record is about to be appended, until endAppend().
    void beginAppend();
    void endAppend(ui::FormulaImage image);

    /// The record at this row is about to be removed, until endRemove().
    void beginRemove(int row);
    void endRemove();

    /// Stores the new label of the formula with this key, in its record too; false leaves all as it
    /// was.
    using Renamer = std::function<bool(const QString& key, const QString& label)>;
    void setRenamer(Renamer renamer) { renamer_ = std::move(renamer); }

    void setImage(const QModelIndex& index, ui::FormulaImage image);

    /// Index of the item with this key; invalid when there is none.
    QModelIndex find(const QString& key) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    const colFormulaInfo& formulas_;
    std::vector<ui::FormulaImage> images_;
    Renamer renamer_;
    int removedRow_ = 0;
};

}  // namespace varo
