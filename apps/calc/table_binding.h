#pragma once

#include "calc/csv_reader.h"
#include "calc/variable_values.h"
#include "engine/formula.h"

#include <optional>
#include <vector>

namespace varo::calc {

/// Where a formula finds the values of its variables in a table.
struct TableBinding {
    std::size_t width;                                ///< columns of the table
    std::vector<std::optional<std::size_t>> columns;  ///< of each variable; without one it is fixed
    engine::Values fixed;                             ///< the values of the fixed variables
};

/// Ties each variable to the column of its name in the header, which is the first of `rows`, or to
/// its given value. Throws CalcError with everything that is wrong: a variable that has neither, or
/// both, or two columns.
TableBinding bindTable(const engine::Formula& formula, const GivenValues& given,
                       const CsvRows& rows);

}  // namespace varo::calc
