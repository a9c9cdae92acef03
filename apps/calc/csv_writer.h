#pragma once

#include <string>
#include <string_view>

namespace varo::calc {

/// Writes a table to the standard output.
class CsvWriter {
  public:
    /// Begins with a byte-order mark or not, and ends lines with CRLF or LF.
    CsvWriter(bool byteOrderMark, bool carriageReturns);

    /// Adds a cell to the row, in quotes if it needs them.
    void addCell(std::string_view content);

    /// Ends the row; writes those that have ended when they have become many. Throws CalcError.
    void endRow();

    /// Writes the rows that have ended since the last time. Throws CalcError.
    void flush();

  private:
    std::string text_;
    std::string_view lineEnd_;
    bool rowBegun_ = false;
};

}  // namespace varo::calc
