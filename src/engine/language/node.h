#pragma once

#include "engine/language/vocabulary.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace varo::engine {

/// A formula as a tree, written out so that every pass over it is one loop: operands come before
/// what is applied to them, and marks stand where something was read that takes effect before its
/// later operands.
enum class NodeKind : std::uint8_t {
    Number,
    Text,
    Variable,
    Result,           ///< the output variable, which no formula may read
    Missing,          ///< stands for an operand that is not there; only in wrong formulas
    LeftOperand,      ///< mark: the left operand of `op` is complete
    Apply,            ///< `op`, to its one or two operands
    UnknownFunction,  ///< mark: the name of a function that does not exist was read
    Argument,         ///< mark: argument number `extent.first` of `function` is complete
    Call,             ///< `function`, to its `extent.first` arguments
};

/// A part of a text, or an index or a count in `first` alone.
struct Extent {
    std::uint32_t first = 0;
    std::uint32_t size = 0;
};

struct Node {
    NodeKind kind{};
    Operator op{};
    Function function{};
    std::uint32_t offset = 0;  ///< where in the formula, in bytes; of a call: where its name is
    union {
        double number;    ///< Number
        Extent extent{};  ///< Variable: its index; Text: its bytes in the literals; Argument, Call:
                          ///< see there; UnknownFunction: `size` is the bytes of the name
    };
};

/// The most operators, parentheses and calls that may be open at one place of a formula.
inline constexpr std::size_t kMaxNesting = 1000;

using Tree = std::vector<Node>;

}  // namespace varo::engine
