#pragma once

#include "calc/csv_reader.h"
#include "calc/table_binding.h"
#include "engine/formula.h"

#include <span>
#include <vector>

namespace varo::calc {

/// Calculates a formula of numbers, many rows at a time.
class BatchCalculator {
  public:
    /// True for the formulas that it can calculate: no text variable, and a number as result.
    static bool serves(const engine::Formula& formula);

    /// `formula` and `binding` must outlive the object.
    BatchCalculator(const engine::Formula& formula, const TableBinding& binding);

    /// The results of the rows from `first` on; NaN for a row for which a RowCalculator finds
    /// a reason to have none. Valid until the next call.
    std::span<const double> calculate(const CsvRows& rows, std::size_t first);

  private:
    bool takeNumbers(const CsvRows& rows, std::size_t row, std::size_t place);

    const engine::Formula& formula_;
    const TableBinding& binding_;
    std::vector<std::vector<double>> numbers_;  // of each variable that has a column
    std::vector<std::size_t> unfit_;            // places of rows that lack a number
    std::vector<double> results_;
};

}  // namespace varo::calc
