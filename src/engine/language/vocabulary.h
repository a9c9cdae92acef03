#pragma once

#include "engine/language/functions.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

/// The operators, functions and constants of the formula language.
namespace varo::engine {

/// The indices of kOperators. The first eleven work on two numbers.
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
    /// The relation of two texts; null when the operator is none.
    bool (*ofTexts)(std::string_view left, std::string_view right) = nullptr;
};

/// A relation of texts by code points, which UTF-8 orders as its bytes do.
template <class Relation>
constexpr bool holds(std::string_view left, std::string_view right) {
    return Relation()(left, right);
}

inline constexpr auto kOperators = std::to_array<OperatorInfo>({
    {"+", 5},
    {"-", 5},
    {"*", 6},
    {"/", 6},
    {"^", 8},
    {"=", 4, holds<std::equal_to<>>},
    {"<>", 4, holds<std::not_equal_to<>>},
    {"<", 4, holds<std::less<>>},
    {"<=", 4, holds<std::less_equal<>>},
    {">", 4, holds<std::greater<>>},
    {">=", 4, holds<std::greater_equal<>>},
    {"Like", 4, contains},
    {"Equal", 4, holds<std::equal_to<>>},
    {"And", 2},
    {"Or", 1},
    {"!", 9},
    {"+", 7},
    {"-", 7},
    {"Not", 3},
});
static_assert(kOperators.size() == static_cast<std::size_t>(Operator::Not) + 1);

constexpr const OperatorInfo& infoOf(Operator op) {
    return kOperators[static_cast<std::size_t>(op)];
}

constexpr bool isRelation(Operator op) {
    return op >= Operator::Same && op <= Operator::Equal;
}

constexpr bool isUnary(Operator op) {
    return op >= Operator::Factorial;
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
