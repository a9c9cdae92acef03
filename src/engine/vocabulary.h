#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// The operators, functions and constants of the formula language.
namespace varo::engine {

enum class Type : std::uint8_t { Number = 1, Text = 2 };

enum class Operator : std::uint8_t {
    Factorial,
    Power,
    Plus,   ///< the sign
    Minus,  ///< the sign
    Multiply,
    Divide,
    Add,
    Subtract,
    Same,
    Different,
    Less,
    LessOrSame,
    Greater,
    GreaterOrSame,
    Like,
    Equal,
    Not,
    And,
    Or,
};

struct OperatorInfo {
    std::string_view spelling;
    std::uint8_t level;  ///< the greater binds the tighter
};

const OperatorInfo& infoOf(Operator op);

constexpr bool isRelation(Operator op) {
    return op >= Operator::Same && op <= Operator::Equal;
}

/// In the order of the table behind infoOf().
enum class Function : std::uint8_t {
    Sin,
    Cos,
    Tan,
    Arcsin,
    Arccos,
    Arctan,
    Arcctan,
    Ctan,
    Sqrt,
    Ln,
    Log,
    Int,
    Deci,
    Preci,
    Mod,
    R2S,
    S2R,
    StrCase,
    StrCat,
    StrSub,
    Left,
    Right,
    StrSubN,
    StrLen,
    StrFind,
    StrFindN,
    StrMismatch,
    StrTrim,
    StrTrimS,
    StrReplace,
    StrDelete,
    StrInsert,
    If,
    Unknown,
};

struct FunctionInfo {
    std::string_view name;
    /// One letter per parameter: n number, t text, a any type, but the same for every a.
    std::string_view parameters;
    char result;               ///< as a parameter's letter
    bool repeatsLast = false;  ///< any number of further arguments like the last

    /// The letter of argument `number` (from 1); 0 when there are too many.
    constexpr char parameter(std::size_t number) const {
        if (number <= parameters.size()) {
            return parameters[number - 1];
        }
        return repeatsLast ? parameters.back() : '\0';
    }
};

const FunctionInfo& infoOf(Function function);

/// The function with that name, which must be case-folded; Function::Unknown when there is none.
Function functionNamed(std::string_view foldedName);

/// The operator written as that case-folded word.
std::optional<Operator> operatorNamed(std::string_view foldedName);

/// The value of the constant with that case-folded name.
std::optional<double> constantNamed(std::string_view foldedName);

/// The case-folded name of the output variable.
inline constexpr std::string_view kFoldedResultName = "result";

}  // namespace varo::engine
