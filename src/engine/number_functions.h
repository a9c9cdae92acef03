#pragma once

#include "engine/error.h"
#include "engine/vocabulary.h"

/// Number functions and the operators that can fail. Arguments are finite. Each puts its value into
/// `result` and answers ErrorCode::None, or says what is wrong; a result that is not finite is the
/// caller's to find.
namespace varo::engine {

ErrorCode factorial(double value, double& result);

ErrorCode power(double base, double exponent, double& result);

inline ErrorCode divide(double dividend, double divisor, double& result) {
    if (divisor == 0) {
        return ErrorCode::DivisionByZero;
    }
    result = dividend / divisor;
    return ErrorCode::None;
}

/// A function of numbers to a number; `second` counts only for those with two parameters.
ErrorCode callNumberFunction(Function function, double first, double second, double& result);

}  // namespace varo::engine
