#pragma once

#include "engine/value_type.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The operators, functions and constants of the formula language.
namespace varo::engine {

/// The first eleven work on two numbers.
enum class Operator : std::uint8_t {
    Add,
    Subtract,
    Multiply,
    Divide,
    Power,
    Same,
    Different,
    Less,
    LessOrSame,
    Greater,
    GreaterOrSame,
    Like,
    Equal,
    And,
    Or,
    Factorial,
    Plus,   ///< the sign
    Minus,  ///< the sign
    Not,
};

struct OperatorInfo {
    std::string_view spelling;
    std::uint8_t level;  ///< the greater binds the tighter
};

inline constexpr std::array<OperatorInfo, 19> kOperators{{
    {"+", 5},  {"-", 5},  {"*", 6}, {"/", 6},  {"^", 8},    {"=", 4},     {"<>", 4},
    {"<", 4},  {"<=", 4}, {">", 4}, {">=", 4}, {"Like", 4}, {"Equal", 4}, {"And", 2},
    {"Or", 1}, {"!", 9},  {"+", 7}, {"-", 7},  {"Not", 3},
}};

constexpr const OperatorInfo& infoOf(Operator op) {
    return kOperators[static_cast<std::size_t>(op)];
}

constexpr bool isRelation(Operator op) {
    return op >= Operator::Same && op <= Operator::Equal;
}

constexpr bool isUnary(Operator op) {
    return op >= Operator::Factorial;
}

/// In the order of kFunctions; those from R2S to StrInsert work on texts.
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

inline constexpr std::array<FunctionInfo, 34> kFunctions{{
    {"sin", "n", 'n'},
    {"cos", "n", 'n'},
    {"tan", "n", 'n'},
    {"arcsin", "n", 'n'},
    {"arccos", "n", 'n'},
    {"arctan", "n", 'n'},
    {"arcctan", "n", 'n'},
    {"ctan", "n", 'n'},
    {"sqrt", "n", 'n'},
    {"ln", "n", 'n'},
    {"log", "n", 'n'},
    {"int", "n", 'n'},
    {"deci", "n", 'n'},
    {"preci", "nn", 'n'},
    {"mod", "nn", 'n'},
    {"R2S", "nn", 't'},
    {"S2R", "t", 'n'},
    {"StrCase", "tn", 't'},
    {"StrCat", "tt", 't', true},
    {"StrSub", "tnnn", 't'},
    {"Left", "tn", 't'},
    {"Right", "tn", 't'},
    {"StrSubN", "ttn", 't'},
    {"StrLen", "t", 'n'},
    {"StrFind", "ttn", 'n'},
    {"StrFindN", "tt", 'n'},
    {"StrMismatch", "ttnnn", 'n'},
    {"StrTrim", "ttn", 't'},
    {"StrTrimS", "t", 't'},
    {"StrReplace", "tttnn", 't'},
    {"StrDelete", "tt", 't'},
    {"StrInsert", "ttn", 't'},
    {"If", "naa", 'a'},
    {"", "", 'a'},
}};

constexpr const FunctionInfo& infoOf(Function function) {
    return kFunctions[static_cast<std::size_t>(function)];
}

/// True for the functions that take or give texts; their texts come before their numbers.
constexpr bool worksOnText(Function function) {
    return function >= Function::R2S && function <= Function::StrInsert;
}

/// The value of the constant `exp`.
inline constexpr double kE = 2.718281828459045;

/// What a name of the language stands for.
struct Word {
    enum class Kind : std::uint8_t { None, Operator, Constant, Result };
    Kind kind = Kind::None;
    Operator op{};                          ///< Operator
    Function function = Function::Unknown;  ///< the function of that name, whatever the kind
    double number = 0;                      ///< Constant
};

/// What the case-folded `name` stands for; a Word of kind None and without a function if nothing.
const Word& wordNamed(std::string_view foldedName);

}  // namespace varo::engine
