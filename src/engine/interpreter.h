#pragma once

#include "engine/code.h"
#include "engine/error.h"

namespace varo::engine {

class TextMachine;

/// What an evaluation that failed tells about it; `subject` only for ErrorCode::NotANumber.
struct Failure {
    ErrorCode code = ErrorCode::None;
    Function function{};
    std::string subject;
};

/// Evaluates `code`, which works on numbers only unless `texts` is given. `variables` holds the
/// number of every number variable by its index. True with the number on top of the stack, if any,
/// in `result`; a text result is on top of `texts`. False with what went wrong in `failure`.
/// Allocates nothing for numbers.
bool interpret(const Code& code, const double* variables, TextMachine* texts, double& result,
               Failure& failure);

}  // namespace varo::engine
