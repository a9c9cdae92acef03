#pragma once

#include "platform/data/access/index_scan.h"
#include "platform/data/access/row.h"

#include <memory>
#include <optional>
#include <sqlite3.h>

namespace varo::access {

/// The rows that a statement reads, in one of the ways of a Plan.
class TableCursor {
  public:
    /// Both parameters are to live as long. The file is being read as long as this lives.
    TableCursor(PageFile& file, const TableDefinition& table) : file_(file), table_(table) {
        file_.beginReading();
    }
    ~TableCursor() { file_.endReading(); }
    Q_DISABLE_COPY_MOVE(TableCursor)

    /// Begins with the first row that the plan finds with these values.
    void filter(int plan, sqlite3_value** values);
    void next();
    bool isAtEnd() const { return !row_.has_value(); }

    /// The row, unless it is at the end.
    const Row& row() const { return *row_; }
    qint64 number() const { return rowNumber(place_); }

  private:
    void find(RowPlace place);
    void filterByIndex(int plan, sqlite3_value** values);
    void beginAt(const Index& index, const QByteArray& first);

    PageFile& file_;
    const TableDefinition& table_;
    std::unique_ptr<RowScan> rows_;
    std::unique_ptr<IndexScan> entries_;
    QByteArray last_;  ///< beginning of the last key that is wanted
    bool hasLast_ = false;
    RowPlace place_;
    std::optional<Row> row_;
};

}  // namespace varo::access
