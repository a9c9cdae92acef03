#pragma once

#include "browse/node_images.h"
#include "store/collections.h"

#include <QAbstractTableModel>
#include <QSet>

#include <functional>
#include <vector>

namespace varo {

/// The formulas of one folder as a model for a list in report view, with their records and
/// pictures. Answers the keys of formulas under ui::NodeView::KeyRole. The labels can be edited
/// once a renamer is set. To add a column, add an enumerator and its row in the table of the
/// implementation.
class FormulaListModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { NameColumn, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;
    ~FormulaListModel() override;

    /// In the order of the list. Records that go, with the model too, take their picture files
    /// along.
    const colFormulaInfo& formulas() const { return formulas_; }

    /// The record of a formula, which is changed through update(); null when it is not listed.
    const clsFormulaInfo* find(qint32 id) const;

    /// Replaces all records by those that `fill` adds; `withProperty` names the formulas that carry
    /// properties, which their pictures tell.
    void replace(const std::function<void(colFormulaInfo&)>& fill,
                 const QSet<qint32>& withProperty = {});
    void append(const clsFormulaInfo& formula);
    void remove(qint32 id);

    /// Changes a record; its identifier stays. Nothing when it is not listed.
    void update(qint32 id, const std::function<void(clsFormulaInfo&)>& change);

    /// Gives an item another picture. Nothing when it is not listed.
    void setImage(qint32 id, FormulaImage image);

    /// Stores the new label of a formula; false leaves the label as it was.
    using Renamer = std::function<bool(qint32 id, const QString& label)>;
    void setRenamer(Renamer renamer) { renamer_ = std::move(renamer); }

    /// Index of a formula; invalid when it is not listed.
    QModelIndex indexOf(qint32 id) const;
    /// Identifier of the formula at a valid index.
    qint32 idAt(const QModelIndex& index) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    colFormulaInfo formulas_;
    std::vector<FormulaImage> images_;
    Renamer renamer_;
};

}  // namespace varo
