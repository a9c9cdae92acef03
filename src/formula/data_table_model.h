#pragma once

#include "library/data_table.h"

#include <QAbstractTableModel>

namespace varo {

/// A data table for a view. Sorting and filtering are the table's. A number is aligned to the
/// right; a text that is longer than a value may be ends with "…".
class DataTableModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    /// `table` must outlive this.
    DataTableModel(DataTable& table, QObject* parent);

    /// The table has been opened, or opening it has failed, which readFailed() does not tell.
    void reset();

    /// Lists the rows with a value that contains `text`; all for "".
    void setFilter(const QString& text);
    /// By the order of the table for -1 and for a column whose values are not shown.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    const DataListing& listing() const { return listing_; }

    /// Lists more rows, and brings what the table has listed meanwhile.
    void loadMore();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

  signals:
    /// Reading has failed, while a listing was made or while it was being drawn; once for each
    /// listing.
    void readFailed() const;

  private:
    void list();
    void tellFailure() const;

    DataTable& table_;
    DataListing listing_;
    int rows_ = 0;  ///< that the views know of
    mutable bool failureTold_ = false;
};

}  // namespace varo
