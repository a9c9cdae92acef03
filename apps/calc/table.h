#pragma once

#include "calc/calc_options.h"
#include "engine/formula.h"

#include <cstdint>

namespace varo::calc {

/// Calculates the valid `formula` for every row of the table that `options` name, and writes the
/// table with a column for the results to the standard output. The rows without a result are told
/// on the standard error; returns how many there are. Throws CalcError when the table does not fit
/// the formula, or reading or writing fails; the rows before that may have been written.
std::uint64_t calculateTable(const engine::Formula& formula, const CalcOptions& options);

}  // namespace varo::calc
