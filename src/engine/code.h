#pragma once

#include "engine/node.h"
#include "engine/vocabulary.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace varo::engine {

/// The operations of the stack machine that evaluates formulas. Numbers and texts have a stack
/// each.
enum class Opcode : std::uint8_t {
    // What they push: `operand` is an index.
    Constant,
    Variable,
    Literal,
    TextVariable,

    // Numbers to number.
    Factorial,
    Power,
    Negate,
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
    Not,
    Truth,    ///< 1 for true, 0 for false
    CallOne,  ///< `function`, of one number to a number
    CallTwo,  ///< `function`, of two numbers to a number

    // Flow: `operand` is the instruction to go on with.
    Jump,
    JumpIfFalse,     ///< takes the condition away
    JumpIfAndFalse,  ///< leaves 0 when it jumps, else takes the condition away
    JumpIfOrTrue,    ///< leaves 1 when it jumps, else takes the condition away

    // With texts.
    TextRelation,  ///< `operand` is the Operator
    CallText,      ///< `function`; `operand` is the number of its arguments

    Return,
};

struct Instruction {
    Opcode opcode{};
    Function function{};
    std::uint32_t operand = 0;
};

/// A text constant, as a part of the literals.
struct LiteralSpan {
    std::uint32_t first;
    std::uint32_t size;
};

/// A compiled formula, held elsewhere. Every stack depth that it reaches is known.
struct Code {
    std::span<const Instruction> instructions;  ///< the last one is Return
    std::span<const double> constants;
    std::span<const LiteralSpan> literalSpans;
    std::string_view literals;
    std::uint32_t textDepth = 0;
    bool usesText = false;
};

/// No code needs more places on the stack of numbers: an open operator or call holds back two at
/// most.
inline constexpr std::size_t kNumberStackSize = 2 * kMaxNesting + 8;

}  // namespace varo::engine
