#pragma once

#include "engine/instruction.h"
#include "engine/node.h"
#include "engine/vocabulary.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace varo::engine {

/// Turns the tree of a formula without errors into code. What constants alone decide is worked out:
/// operators and functions of numbers, and the branch of a condition; what would fail stays, to
/// fail when it is evaluated.
///
/// Variables, constants and one operator on two of them are not loaded before it is known what is
/// done with them, so that one instruction can do all at once. A value in the accumulator that
/// waits while that is needed for something else is stored as a temporary.
class Compiler {
  public:
    /// Fastest: an operator on two variables or constants may be applied as late as its value is
    /// needed. Reading: everything that can fail happens in reading order.
    enum class Order : bool { Fastest, Reading };

    /// `variableTypes` and `literals` must outlive what code() answers. An empty `variableTypes`
    /// means numbers only.
    void run(Order order, const Tree& tree, const std::vector<Type>& variableTypes,
             std::string_view literals);

    /// The code of the last run(), valid until the next.
    Code code() const;

  private:
    /// Where a value is that the running code has at hand.
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

    static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

    /// A condition whose later operands are being compiled.
    struct Branch {
        std::optional<bool> known;  ///< its value; then it has no code
        std::uint32_t begin = 0;    ///< the first instruction of the operand being compiled
        std::uint32_t jump = 0;     ///< the jump to be given its target
    };

    void visit(const Node& node);
    void variable(std::uint32_t index);
    void number(double value);
    void apply(Operator op);
    void binary(Operator op);
    void combineLeaves(Operator op);
    bool combineWithPair(Operator op);
    void combineLoaded(Operator op);
    static bool isPowerOfTwo(const Operand& operand);
    bool power();
    void unary(Unary operation);
    void textRelation(Operator op);
    void argument(Function function, std::uint32_t number);
    void call(Function function, std::uint32_t arguments);
    void callOfTwo(Function function);
    void callText(Function function, std::uint32_t arguments);
    void openBranch(Other jump);
    void closeLogical(Operator op);
    void conditionalArgument(std::uint32_t argument);
    void closeConditional();

    std::uint32_t here() const { return static_cast<std::uint32_t>(instructions_.size()); }
    void emit(const Instruction& instruction);
    Instruction& emit(Opcode opcode);
    void emitFresh(Instruction instruction);
    void emitFusable(Operator op, const Operand& leaf);
    bool fuse(Operator op, const Operand& other);
    void land(std::uint32_t jump);
    std::uint32_t seal();
    void dropCode(std::uint32_t begin);

    Operand& top(std::size_t below = 0) { return operands_[operands_.size() - 1 - below]; }
    void push(Operand operand);
    void pushLeaf(Place place, std::uint16_t variable, double number) {
        const auto slot = static_cast<std::uint16_t>(numbers_++);
        operands_.push_back({place, {}, slot, variable, 0, number});
    }
    void pop(std::size_t count);
    void replace(std::size_t count, const Operand& operand);
    void replaceByConstant(std::size_t count, double value);
    void computed(std::size_t count);
    void freeAccumulator();
    void storeTop(std::size_t below = 0);
    void loadTop(std::size_t below = 0);

    Order order_ = Order::Fastest;
    const std::vector<Type>* variableTypes_ = nullptr;
    std::string_view literals_;
    std::vector<Instruction> instructions_;
    std::vector<LiteralSpan> literalSpans_;
    std::vector<Operand> operands_;
    std::vector<Branch> branches_;
    std::size_t accumulator_ = kNone;  // which operand is there
    std::size_t fusable_ = kNone;  // the number of instructions when the last is A • V or A • K
    std::size_t label_ = kNone;    // where the last sealed instruction ends
    std::uint32_t numbers_ = 0;    // among the operands
    std::uint32_t temporaries_ = 0;
    std::uint32_t textDepth_ = 0;
    bool usesText_ = false;
};

}  // namespace varo::engine
