#include "calc/table.h"

#include "calc/batch_calculator.h"
#include "calc/complaint.h"
#include "calc/csv_reader.h"
#include "calc/csv_writer.h"
#include "calc/files.h"
#include "calc/progress.h"
#include "calc/result_format.h"
#include "calc/row_calculator.h"
#include "calc/table_binding.h"
#include "calc/variable_values.h"

#include <cmath>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace varo::calc {
namespace {

constexpr std::string_view kResultColumn = "Result";
constexpr std::uint64_t kMostReasons = 10;

/// Tells on the standard error which rows have no result, the first ones with the reason.
class FailedRows {
  public:
    /// `progress` must outlive the object.
    FailedRows(std::string table, Progress& progress)
        : table_(std::move(table)), progress_(progress) {}

    std::uint64_t count() const { return count_; }

    /// False when add() does not look at the reason any more.
    bool wantsReason() const { return count_ < kMostReasons; }

    void add(std::uint64_t line, const std::string& reason) {
        if (wantsReason()) {
            progress_.clear();
            complain(table_ + ":" + std::to_string(line) + ": " + reason);
        }
        ++count_;
    }

    void tellCount() const {
        if (count_ > kMostReasons) {
            progress_.clear();
            complain(table_ + ": 共有" + std::to_string(count_) + "行没有结果，以上是前" +
                     std::to_string(kMostReasons) + "行。");
        }
    }

  private:
    std::string table_;
    Progress& progress_;
    std::uint64_t count_ = 0;
};

/// The results of rows as texts; "" for a row without one, which goes to the failed rows.
class RowResults {
  public:
    /// All arguments but `format` must outlive the object.
    RowResults(const engine::Formula& formula, const TableBinding& binding, ResultFormat format,
               FailedRows& failed)
        : inBatches_(BatchCalculator::serves(formula)),
          batch_(formula, binding),
          single_(formula, binding),
          format_(format),
          failed_(failed) {}

    /// `rows` from `first` on are those that text() will be asked for, each once and in order.
    void begin(const CsvRows& rows, std::size_t first) {
        rows_ = &rows;
        first_ = first;
        if (inBatches_) {
            numbers_ = batch_.calculate(rows, first);
        }
    }

    std::string text(std::size_t row) {
        if (inBatches_) {
            const double number = numbers_[row - first_];
            if (!std::isnan(number)) {
                return format_.text(number);
            }
            if (!failed_.wantsReason()) {
                failed_.add(rows_->line(row), {});
                return {};
            }
        }
        engine::Value result;
        if (single_.calculate(*rows_, row, result)) {
            return format_.text(result);
        }
        failed_.add(rows_->line(row), single_.reason());
        return {};
    }

  private:
    bool inBatches_;
    BatchCalculator batch_;
    RowCalculator single_;
    ResultFormat format_;
    FailedRows& failed_;
    const CsvRows* rows_ = nullptr;
    std::size_t first_ = 0;
    std::span<const double> numbers_;
};

/// Writes a row of a table that is `width` columns wide. What the row has beyond them comes after
/// the result, so that nothing is lost and the result stands in its column.
void writeRow(const CsvRows& rows, std::size_t row, std::size_t width, std::string_view result,
              CsvWriter& writer) {
    const std::size_t count = rows.cellCount(row);
    for (std::size_t column = 0; column < width; ++column) {
        writer.addCell(column < count ? rows.cell(row, column) : std::string_view());
    }
    writer.addCell(result);
    if (rows.hasContentFrom(row, width)) {
        for (std::size_t column = width; column < count; ++column) {
            writer.addCell(rows.cell(row, column));
        }
    }
    writer.endRow();
}

}  // namespace

std::uint64_t calculateTable(const engine::Formula& formula, const CalcOptions& options) {
    const GivenValues given = readAssignments(formula, options.assignments);
    InputFile file(options.table);
    CsvReader reader(file);
    if (!reader.next()) {
        throw CalcError("“" + file.name() + "”是空的，没有表头！");
    }
    const TableBinding binding = bindTable(formula, given, reader.rows());
    Progress progress(file.size());
    FailedRows failed(file.name(), progress);
    RowResults results(formula, binding, ResultFormat(options.decimals), failed);
    CsvWriter writer(reader.hasByteOrderMark(), reader.hasCarriageReturns());
    writeRow(reader.rows(), 0, binding.width, kResultColumn, writer);
    std::uint64_t count = 0;
    std::size_t first = 1;  // after the header
    do {
        const CsvRows& rows = reader.rows();
        results.begin(rows, first);
        for (std::size_t row = first; row < rows.size(); ++row) {
            writeRow(rows, row, binding.width, results.text(row), writer);
        }
        writer.flush();
        count += rows.size() - first;
        first = 0;
        progress.update(count, reader.bytesRead());
    } while (reader.next());
    failed.tellCount();
    return failed.count();
}

}  // namespace varo::calc
