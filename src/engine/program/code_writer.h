#pragma once

#include "engine/language/vocabulary.h"
#include "engine/machine/instruction.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace varo::engine {

/// Writes instructions for one operand, operator or call after the other, and keeps track of
/// where the running code has their values.
///
/// Variables, constants and one operator on two of them are not loaded before it is known what is
/// done with them, so that one instruction can do all at once. A value in the accumulator that
/// waits while that is needed for something else is stored as a temporary.
class CodeWriter {
  public:
    /// Fastest: an operator on two variables or constants may be applied as late as its value is
    /// needed. Reading: everything that can fail happens in reading order.
    enum class Order : bool { Fastest, Reading };

    /// Where a value is.
    enum class Place : std::uint8_t {
        Variable,  ///< a
        Constant,  ///< number
        VV,        ///< not computed yet: variable a `op` variable b
        VK,        ///< not computed yet: variable a `op` number
        KV,        ///< not computed yet: number `op` variable a
        Accumulator,
        Temporary,  ///< temporary `slot`
        Text,       ///< on the stack of texts
    };

    struct Operand {
        Place place{};
        Operator op{};
        std::uint16_t slot = 0;  ///< the temporary that is free for it
        std::uint16_t a = 0;
        std::uint16_t b = 0;
        double number = 0;

        bool isLeaf() const { return place <= Place::Constant; }
        bool isPair() const { return place >= Place::VV && place <= Place::KV; }
    };

    /// Begins anew.
    void start(Order order);

    // What the code has at hand, and how to add to it.

    /// The operand so far below the last one; valid until something is written.
    const Operand& top(std::size_t below = 0) const {
        return operands_[operands_.size() - 1 - below];
    }
    bool isConstant(std::size_t below = 0) const { return top(below).place == Place::Constant; }
    bool isText(std::size_t below = 0) const { return top(below).place == Place::Text; }

    void variable(std::uint32_t index);
    void number(double value);

    /// A text that `operation` with `index` pushes.
    void text(Other operation, std::uint32_t index);

    // What is done with the last operands, which then are one.

    /// An operator on two numbers, one of the first eleven.
    void binary(Operator op);
    void unary(Unary operation);

    /// Takes `count` operands away and puts `operand` there.
    void replace(std::size_t count, const Operand& operand);
    void replaceByConstant(std::size_t count, double value);

    /// The instruction just emitted has made of the last `count` operands, numbers or two texts,
    /// what is in the accumulator.
    void computed(std::size_t count);

    /// Makes an operand the one in the accumulator, or stores it as a temporary.
    void loadTop(std::size_t below = 0);
    void storeTop(std::size_t below = 0);

    /// Stores what is in the accumulator, if it is still wanted.
    void freeAccumulator();

    // Instructions

    /// The index of the next instruction.
    std::uint32_t here() const { return static_cast<std::uint32_t>(instructions_.size()); }

    /// An instruction to be completed at once. The accumulator must be free if it changes that.
    Instruction& emit(Opcode opcode);

    /// Makes `jump` lead to what comes next.
    void setTarget(std::uint32_t jump);

    /// Keeps what comes next from becoming part of the last instruction, or the other way round;
    /// returns where it will be.
    std::uint32_t placeLabel();

    /// Forgets the instructions from `begin` on, which placeLabel() or a jump came before.
    void dropCode(std::uint32_t begin);

    std::span<Instruction> instructions() { return instructions_; }
    std::span<const Instruction> instructions() const { return instructions_; }
    std::uint32_t temporaries() const { return temporaries_; }
    std::uint32_t textDepth() const { return textDepth_; }

  private:
    static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

    void combineLeaves(Operator op);
    bool combineWithPair(Operator op);
    void combineLoaded(Operator op);
    static bool isPowerOfTwo(const Operand& operand);
    bool power();

    void emit(const Instruction& instruction);
    void emitFresh(Instruction instruction);
    void emitFusable(Operator op, const Operand& leaf);
    bool fuse(Operator op, const Operand& other);

    Operand& topForChange(std::size_t below = 0) { return operands_[operands_.size() - 1 - below]; }
    void push(Operand operand);
    void pushLeaf(Place place, std::uint16_t variable, double number) {
        const auto slot = static_cast<std::uint16_t>(numbers_++);
        operands_.push_back({place, {}, slot, variable, 0, number});
    }
    void pop(std::size_t count);

    Order order_ = Order::Fastest;
    std::vector<Instruction> instructions_;
    std::vector<Operand> operands_;
    std::size_t accumulator_ = kNone;  // which operand is there
    std::size_t fusable_ = kNone;  // the number of instructions when the last is A • V or A • K
    std::size_t label_ = kNone;    // the number of instructions before the last label
    std::uint32_t numbers_ = 0;    // among the operands
    std::uint32_t temporaries_ = 0;
    std::uint32_t textDepth_ = 0;
};

}  // namespace varo::engine
