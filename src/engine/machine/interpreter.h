#pragma once

#include "engine/error.h"
#include "engine/machine/instruction.h"

#include <string>

namespace varo::engine {

class TextMachine;

/// What an evaluation that failed tells about it.
struct Failure {
    ErrorCode code = ErrorCode::None;
    Function function{};  ///< for ErrorCode::OutsideDomain
    std::string subject;  ///< for ErrorCode::NotANumber
};

/// Evaluates any program and looks at every value on the way. `variables` holds the number of every
/// number variable by its index; `texts` may be null when the code works on numbers only. True with
/// the number in `result`; a text result is on top of `texts`. False with the first thing that went
/// wrong in `failure`.
bool interpret(const Code& code, const double* variables, TextMachine* texts, double& result,
               Failure& failure);

}  // namespace varo::engine
