#pragma once

#include "library/stored_condition.h"
#include "platform/data/connection.h"

namespace varo {

/// The rows of one filter in a library, cut behind kMaxConditionNodes. A text over kTextLimit
/// characters is cut too, so that it is still over it. Throws data::Error.
FilterRows readFilterRows(data::Connection& connection, qint32 filterID);

/// Goes through all filters of a library that have nodes, in the order of their numbers, in one
/// pass over each table. Rows whose filter has no number of 32 bits are passed over. Everything
/// throws data::Error.
class FilterReader {
  public:
    /// `connection` is open on the library and must outlive this.
    explicit FilterReader(data::Connection& connection);

    /// Goes to the next filter, at first to the first one; false behind the last.
    bool next();

    qint32 filter() const { return filter_; }

    /// Cut as by readFilterRows().
    const FilterRows& rows() const { return rows_; }

  private:
    void readNodes();
    void readTerms();

    data::Recordset nodes_;
    data::Recordset terms_;
    qint32 filter_ = 0;
    FilterRows rows_;
};

}  // namespace varo
