#pragma once

#include "calc/files.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct csv_parser;

namespace varo::calc {

/// Some rows of a table, each with at least one cell.
class CsvRows {
  public:
    std::size_t size() const { return rows_.size(); }

    /// The line of the file on which a row begins, from 1.
    std::uint64_t line(std::size_t row) const { return rows_[row].line; }

    std::size_t cellCount(std::size_t row) const { return rows_[row].cellCount; }

    /// The content of a cell, which the row must have.
    std::string_view cell(std::size_t row, std::size_t column) const {
        const std::size_t index = rows_[row].firstCell + column;
        return std::string_view(bytes_).substr(ends_[index], ends_[index + 1] - ends_[index]);
    }

    /// True when the row has a cell with content at or after `column`.
    bool hasContentFrom(std::size_t row, std::size_t column) const;

  private:
    friend class CsvReader;

    struct Row {
        std::size_t firstCell;
        std::size_t cellCount;
        std::uint64_t line;
    };

    std::string bytes_;                 // of all cells, without anything between them
    std::vector<std::size_t> ends_{0};  // the end of each cell in bytes_, after a leading 0
    std::vector<Row> rows_;
};

/// Reads the rows of a table, many at a time and in bounded memory: cells are separated by commas
/// and may be quoted; a line ends with LF, CRLF or CR. Blanks around a cell that is not quoted do
/// not belong to it. Empty lines are no rows. A byte-order mark is skipped.
class CsvReader {
  public:
    /// `file` must outlive the object.
    explicit CsvReader(InputFile& file);
    ~CsvReader();
    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;

    /// Replaces rows() by those that follow. Returns false when there are no more. Throws CalcError
    /// when the file cannot be read, a quoted cell never ends, a row is longer than 16 MiB or has
    /// more than 16384 cells, or a cell is longer than 1 MiB; the rows before are handed out first.
    bool next();

    const CsvRows& rows() const { return rows_; }

    std::uint64_t bytesRead() const { return bytesRead_; }

    /// The table's own form, known after the first next().
    bool hasByteOrderMark() const { return hasByteOrderMark_; }
    bool hasCarriageReturns() const { return hasCarriageReturns_; }

  private:
    struct ParserDeleter {
        void operator()(csv_parser* parser) const;
    };

    std::string_view readChunk();
    void parse(std::string_view chunk);
    void finish();
    void throwBehindRows() const;
    void forgetRows();
    /// What the parser calls; `reader` is this object.
    static void takeCell(void* content, std::size_t size, void* reader);
    static void takeRowEnd(int terminator, void* reader);

    void addCell(std::string_view content);
    void endRow(int terminator);
    [[noreturn]] void refuseOpenRow(const char* reason) const;

    InputFile& file_;
    std::unique_ptr<csv_parser, ParserDeleter> parser_;
    std::vector<char> buffer_;
    CsvRows rows_;
    std::exception_ptr failure_;  // thrown while the parser, which is C, was calling back
    std::uint64_t bytesRead_ = 0;
    std::uint64_t line_ = 1;
    std::uint64_t openRowLine_ = 1;
    std::size_t openRowCells_ = 0;
    std::size_t openRowBytes_ = 0;  // of the chunks read since a row has ended
    bool afterCarriageReturn_ = false;
    bool hasByteOrderMark_ = false;
    bool hasCarriageReturns_ = false;
    bool hasHeader_ = false;
    bool finished_ = false;
};

}  // namespace varo::calc
