#pragma once

#include "platform/data/error.h"

#include <QString>
#include <QStringView>

#include <memory>

namespace varo::data {

/// What a field holds.
enum class ValueType { Null, Integer, Floating, Text, Binary };

/// The rows that a query returned, read forwards one at a time. A default-constructed record set is
/// closed. Rows are fetched as they are read, so a record set holds one row at a time and locks its
/// file for readers until it is closed or destroyed.
class Recordset {
  public:
    Recordset() = default;
    Recordset(Recordset&&) noexcept = default;
    Recordset& operator=(Recordset&&) noexcept = default;
    ~Recordset() = default;

    /// False also once the connection has been closed; everything but atEnd() and columnCount()
    /// then throws Error.
    bool isOpen() const noexcept;
    void close() noexcept { rows_.reset(); }

    /// True when there is no current row: behind the last row, or the result is empty.
    bool atEnd() const noexcept;

    /// Goes to the next row. Throws Error when reading fails or there is no current row.
    void moveNext();

    /// Position of the column with this name, letter case ignored; -1 when there is none.
    int column(QStringView name) const;
    int columnCount() const noexcept;
    QString columnName(int column) const;

    /// Fields of the current row, by column position. NULL reads as 0 or as empty text; a number
    /// reads as the shortest text that reads back as that number. An integer beyond the range of
    /// the result is cut to the range. Throws Error when there is no current row or no such column.
    ValueType valueType(int column) const;
    bool isNull(int column) const { return valueType(column) == ValueType::Null; }
    qint32 integer(int column) const;
    qint64 integer64(int column) const;
    double real(int column) const;
    QString text(int column) const;

    /// The text of a field, or of a longer one its beginning and an ellipsis, `most` characters in
    /// all. `most` is at least 2.
    QString text(int column, int most) const;

    /// The same fields by column name. Throws Error when there is no such column.
    qint32 integer(QStringView name) const;
    QString text(QStringView name) const;

  private:
    friend class Connection;
    explicit Recordset(std::shared_ptr<struct RowSource> rows);

    std::shared_ptr<struct RowSource> rows_;
};

}  // namespace varo::data
