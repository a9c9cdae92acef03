#pragma once

#include <cstdint>
#include <string>

namespace varo::engine {

/// What can be wrong with a formula, or with an evaluation of it.
enum class ErrorCode : std::uint8_t {
    None,

    // Wrong arguments of a function; the first three are the kinds that CalcEngine::GetErrorInfo
    // reports.
    NumberWanted,      ///< subject: function
    TextWanted,        ///< subject: function
    TooFewArguments,   ///< subject: function
    TooManyArguments,  ///< subject: function
    UnknownFunction,   ///< subject: function

    // The rest of what makes a formula wrong.
    BadCharacter,  ///< subject: character
    Incomplete,
    Parentheses,
    UnclosedText,
    NestedTooDeeply,
    TextOperand,    ///< subject: operator
    MixedOperands,  ///< subject: operator
    ResultRead,

    // What only evaluating shows.
    NoValue,  ///< subject: variable
    DivisionByZero,
    OutsideDomain,  ///< subject: function
    Factorial,
    Power,
    OutOfRange,
    NotANumber,  ///< subject: text
};

/// One error, with what its message says.
struct Error {
    ErrorCode code = ErrorCode::None;
    std::uint32_t position = 0;  ///< in the formula, in characters from 1; 0 when there is none
    std::int32_t argument = 0;   ///< the number of the argument, from 1, for a wrong or missing one
    std::string subject;         ///< what the code's comment names

    explicit operator bool() const { return code != ErrorCode::None; }

    /// The message for the user; "" when there is no error.
    std::string text() const;
};

/// True for the errors that CalcEngine::Calculate reports as a failure.
constexpr bool isWrongArgument(ErrorCode code) {
    return code == ErrorCode::NumberWanted || code == ErrorCode::TextWanted ||
           code == ErrorCode::TooFewArguments;
}

}  // namespace varo::engine
