#pragma once

#include "platform/data/recordset.h"

#include <QStringList>

#include <initializer_list>
#include <optional>
#include <vector>

namespace varo {

/// The whole number of 32 bits in `column`, 0 for NULL; nothing when it holds something else.
std::optional<qint32> wholeNumber(const data::Recordset& rs, int column);

/// What a dump leaves out.
class DumpComplaints {
  public:
    /// `row` is a rowid.
    void add(const char* table, qint64 row, const QString& what);

    /// The numbers in `columns` of the current row, whose rowid is the first column; nothing, with
    /// a complaint, when one is none.
    std::optional<std::vector<qint32>> numbers(const data::Recordset& rs, const char* table,
                                               std::initializer_list<int> columns);

    /// A line for each of the first thousand and one with the number of the others; none stays.
    QStringList takeLines();

  private:
    QStringList lines_;
    qsizetype count_ = 0;
};

}  // namespace varo
