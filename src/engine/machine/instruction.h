#pragma once

#include "engine/language/node.h"
#include "engine/language/vocabulary.h"
#include "engine/machine/operations.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace varo::engine {

/// How an instruction on numbers finds its operands. A is the accumulator, where every instruction
/// leaves its value; V a variable; K a constant; T a value stored before. With two operators,
/// `AVK` is (A ∘ V) • K, as is `AV_K`, and `A_VK` is A ∘ (V • K); ∘ is the first operator then, •
/// the second.
enum class Shape : std::uint8_t {
    // One operator, any of the first eleven.
    AV,
    AK,
    VA,
    KA,
    TA,
    AT,
    VV,
    VK,
    KV,

    // Two operators, each one of + - * /.
    AVV,
    AVK,
    AKV,
    VVV,
    VVK,
    VKV,
    KVV,
    A_VV,
    A_VK,
    A_KV,
    V_VV,
    V_VK,
    V_KV,
    VV_A,
    VK_A,
    KV_A,
    T_AV,
};

/// A number for every operation: those of shapes and operators, then those of one operand, then the
/// functions of two numbers, then the others.
using Opcode = std::uint16_t;

inline constexpr Opcode kOpcodesPerShape = 16;
inline constexpr Opcode kUnaryOpcodes = (static_cast<Opcode>(Shape::T_AV) + 1) * kOpcodesPerShape;
inline constexpr Opcode kCallOpcodes = kUnaryOpcodes + 2 * kUnaryCount;
inline constexpr Opcode kOtherOpcodes = kCallOpcodes + kFunctionCount;

/// The other operations, and which fields of the instruction they use.
enum class Other : std::uint8_t {
    // These give a number.
    LoadVariable,   ///< variable `index`
    LoadConstant,   ///< number
    LoadTemporary,  ///< temporary a

    Store,         ///< the accumulator into temporary a
    Jump,          ///< to the instruction `index` further on
    JumpIfFalse,   ///< to the instruction `index` further on
    JumpIfTrue,    ///< to the instruction `index` further on
    Literal,       ///< pushes text constant `index`
    TextVariable,  ///< pushes the text of variable `index`
    TextRelation,  ///< of the two topmost texts; b is the Operator
    CallText,      ///< Function b with `index` arguments; its numbers are temporaries from a on
    Return,
};

inline constexpr Opcode kOpcodeCount = kOtherOpcodes + static_cast<Opcode>(Other::Return) + 1;

constexpr Opcode opcodeOf(Shape shape, Operator op) {
    return static_cast<Opcode>(static_cast<Opcode>(shape) * kOpcodesPerShape +
                               static_cast<Opcode>(op));
}
constexpr Opcode opcodeOf(Shape shape, Operator first, Operator second) {
    return static_cast<Opcode>(opcodeOf(shape, first) + 3 * static_cast<Opcode>(first) +
                               static_cast<Opcode>(second));
}
/// Of the accumulator, or of a variable.
constexpr Opcode opcodeOf(Unary operation, bool ofVariable = false) {
    return static_cast<Opcode>(kUnaryOpcodes + static_cast<Opcode>(operation) +
                               (ofVariable ? kUnaryCount : 0));
}
/// A function of two numbers, temporary a and the accumulator.
constexpr Opcode opcodeOf(Function function) {
    return static_cast<Opcode>(kCallOpcodes + static_cast<Opcode>(function));
}
constexpr Opcode opcodeOf(Other operation) {
    return static_cast<Opcode>(kOtherOpcodes + static_cast<Opcode>(operation));
}

/// The variables of a shape are a, b and c in their order, its constant is `number`, its temporary
/// is a (of T_AV: b). A variable whose index does not fit is loaded into the accumulator instead.
struct Instruction {
    /// Executes this instruction and all that follow, for one row of variables: see fast_steps.h.
    using Step = double (*)(const Instruction* at, const double* variables, double* temporaries,
                            double accumulator, double poison, double kept);

    Step step = nullptr;
    Opcode opcode = 0;
    std::uint16_t a = 0;
    std::uint16_t b = 0;
    std::uint16_t c = 0;
    union {
        double number = 0;
        std::uint32_t index;
    };
};

constexpr bool isUnary(Opcode opcode) {
    return opcode >= kUnaryOpcodes && opcode < kCallOpcodes;
}
constexpr bool isOfVariable(Opcode opcode) {
    return isUnary(opcode) && opcode >= kUnaryOpcodes + kUnaryCount;
}
constexpr Unary unaryOf(Opcode opcode) {
    return static_cast<Unary>((opcode - kUnaryOpcodes) % kUnaryCount);
}

constexpr bool isCall(Opcode opcode) {
    return opcode >= kCallOpcodes && opcode < kOtherOpcodes;
}
constexpr Function functionOf(Opcode opcode) {
    return static_cast<Function>(opcode - kCallOpcodes);
}

/// An instruction that takes nothing from the accumulator may store it first; its opcode is then
/// this much greater.
inline constexpr Opcode kStoresFirst = 0x8000;

constexpr bool isFresh(Shape shape) {
    return (shape >= Shape::VV && shape <= Shape::KV) ||
           (shape >= Shape::VVV && shape <= Shape::KVV) ||
           (shape >= Shape::V_VV && shape <= Shape::V_KV);
}
constexpr bool isFresh(Opcode opcode) {
    return opcode < kUnaryOpcodes ? isFresh(static_cast<Shape>(opcode / kOpcodesPerShape))
                                  : isOfVariable(opcode);
}

/// Whether `number` is a constant of the instruction.
constexpr bool takesConstant(Shape shape) {
    return shape != Shape::VV && shape != Shape::VVV && shape != Shape::V_VV;
}

/// Where an instruction with kStoresFirst keeps the number of the temporary: in c if it has a
/// constant, else in `index`.
constexpr bool storesInC(Opcode opcode) {
    return opcode < kUnaryOpcodes && takesConstant(static_cast<Shape>(opcode / kOpcodesPerShape));
}
constexpr std::uint32_t storedTemporary(Opcode opcode, const Instruction& at) {
    return storesInC(opcode) ? at.c : at.index;
}

/// A text constant, as a part of the literals.
struct LiteralSpan {
    std::uint32_t first;
    std::uint32_t size;
};

/// A compiled formula, held elsewhere.
struct Code {
    std::span<const Instruction> instructions;  ///< the last one is Return
    std::span<const LiteralSpan> literalSpans;
    std::string_view literals;
    std::uint32_t temporaries = 0;  ///< how many there are, at most kMostTemporaries
    std::uint32_t textDepth = 0;    ///< the most texts that wait on the stack of texts
    bool usesText = false;
};

/// An open operator or call holds back three values at most.
inline constexpr std::size_t kMostTemporaries = 3 * kMaxNesting + 8;

}  // namespace varo::engine
