#pragma once

#include "calc/calc_options.h"
#include "engine/formula.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace varo::calc {

/// The values that the command line gives.
struct GivenValues {
    engine::Values values;
    std::vector<bool> given;  ///< which variables have one
};

/// The values of `assignments`. Throws CalcError with everything that is wrong about them: no such
/// variable, a second value for one, a text that cannot be its value.
GivenValues readAssignments(const engine::Formula& formula,
                            std::span<const Assignment> assignments);

/// Gives variable `index` the value that stands in `text`. Returns "", or why it cannot be its
/// value, which it leaves as it was.
std::string giveValue(const engine::Formula& formula, std::size_t index, std::string_view text,
                      engine::Values& values);

/// The message for a variable without a value.
std::string noValue(std::string_view name);

}  // namespace varo::calc
