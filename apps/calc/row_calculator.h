#pragma once

#include "calc/csv_reader.h"
#include "calc/table_binding.h"
#include "engine/formula.h"

#include <string>

namespace varo::calc {

/// Calculates any formula, one row at a time.
class RowCalculator {
  public:
    /// `formula` and `binding` must outlive the object.
    RowCalculator(const engine::Formula& formula, const TableBinding& binding);

    /// True with the value in `result`; else false, and reason() tells why.
    bool calculate(const CsvRows& rows, std::size_t row, engine::Value& result);

    const std::string& reason() const { return reason_; }

  private:
    bool takeValues(const CsvRows& rows, std::size_t row);

    const engine::Formula& formula_;
    const TableBinding& binding_;
    engine::Values values_;
    std::string reason_;
};

}  // namespace varo::calc
