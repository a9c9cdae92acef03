#pragma once

#include "platform/data/connection.h"

#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <vector>

namespace varo {

/// A value of a data table.
struct DataCell {
    /// The value as text, a number exactly; "" for NULL and for a binary value. Of a text that is
    /// longer than a value may be, as much as shows that it is.
    QString text;
    bool isNumber = false;
};

/// Which rows of a data table are listed, and in which order.
struct DataListing {
    QString filter;       ///< rows with a value that contains this text, ASCII letter case ignored
    int sortColumn = -1;  ///< -1: in the order of the table
    bool descending = false;
};

/// The rows of a table that values are picked from. They are read as they are looked at, in short
/// reads after which nothing is locked, so that a table of any length is listed at once and takes a
/// few bytes a row. Rows that another program changes or deletes meanwhile show their new values,
/// or nothing, once they are read; rows that it adds are in the next listing.
class DataTable {
  public:
    /// A place in the listing.
    struct Place {
        int row;
        int column;
    };

    /// Reads the columns of a table and the first rows of the listing in the table's order.
    /// `connection` must stay open and outlive this. Returns false when there is no such table or
    /// it cannot be read.
    bool open(data::Connection& connection, const QString& table);

    int columnCount() const { return static_cast<int>(columns_.size()); }
    QString columnName(int column) const { return columns_.at(column).name; }
    /// Whether the values of the column are shown: those of numbers, texts and GUIDs are, dates,
    /// yes or no and binary values are not.
    bool isShown(int column) const { return columns_.at(column).isShown; }

    /// Lists the rows anew, none before open(). Sorting is by value: numbers before texts, texts
    /// without regard to ASCII letter case, equal values in the order of the table. Returns false
    /// when reading fails; no row is listed then.
    bool list(const DataListing& listing);

    /// Rows listed so far; 0 before open().
    int rowCount() const { return rowCount_; }
    /// Whether loadMore() may list more rows.
    bool hasMore() const { return hasMore_; }
    /// Lists more rows behind the others. Returns false when reading fails; nothing more is listed
    /// then.
    bool loadMore();

    /// A value of a listed row; empty for a column that is not shown, a row that has gone, and when
    /// reading fails, after which nothing more is read until the next listing.
    const DataCell& cell(int row, int column);
    /// Whether reading rows has failed since the last listing.
    bool hasFailed() const { return hasFailed_; }

    /// What identifies a listed row; nothing in a table that does not number its rows.
    std::optional<qint64> numberOf(int row) const;

    // Only while every row is listed in the order of the table:
    /// The place of the row with this number, which is listed then; nothing when there is none.
    std::optional<int> rowWithNumber(qint64 number);
    /// The first place with this value; nothing when there is none, the table does not number its
    /// rows, or reading fails.
    std::optional<Place> find(const QString& value);

  private:
    struct Column {
        QString name;
        bool isShown;
    };
    using Row = std::vector<DataCell>;

    QString condition() const;
    data::Arguments conditionArguments() const;
    QString order() const;
    QString shownColumns() const;
    void readNumbers();
    void countRows();
    std::vector<Row> readPage(int page);
    std::vector<Row> readNumberedPage(int first, int count);
    std::vector<Row> readPageAt(int first, int count);
    Row readRow(const data::Recordset& rs, int firstColumn) const;

    data::Connection* connection_ = nullptr;
    QString table_;      ///< quoted
    QString rowNumber_;  ///< "" when the table does not number its rows
    std::vector<Column> columns_;
    DataListing listing_;
    std::vector<qint64> numbers_;            ///< of the listed rows
    std::map<int, std::vector<Row>> pages_;  ///< those read last
    int rowCount_ = 0;
    bool hasMore_ = false;
    bool hasFailed_ = false;
};

}  // namespace varo
