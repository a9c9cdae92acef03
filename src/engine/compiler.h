#pragma once

#include "engine/code.h"
#include "engine/node.h"
#include "engine/vocabulary.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace varo::engine {

/// Turns the tree of a formula without errors into code. What constants alone decide is worked out:
/// operators and functions of numbers, and the branch of a condition; what would fail stays, to
/// fail when it is evaluated.
class Compiler {
  public:
    /// `variableTypes` and `literals` must outlive what code() answers.
    void run(const Tree& tree, const std::vector<Type>& variableTypes, std::string_view literals);

    /// The code of the last run(), valid until the next.
    Code code() const;

  private:
    /// A value on a stack of the running code, or what is left of one.
    struct Operand {
        std::uint32_t begin = 0;  ///< its first instruction
        Type type = Type::Number;
        std::optional<double> constant;  ///< its number; then it is one instruction, the last one
    };

    /// A condition whose later operands are being compiled.
    struct Branch {
        std::optional<bool> known;  ///< its value; then it has no code
        std::uint32_t jump = 0;     ///< the jump to be given its target
    };

    std::uint32_t here() const { return static_cast<std::uint32_t>(instructions_.size()); }
    void emit(Opcode opcode, Function function = {}, std::uint32_t operand = 0);
    void push(const Operand& operand);
    Operand pop();
    void pushNumber(std::uint32_t begin, double value);
    void dropCode(std::uint32_t begin) { instructions_.resize(begin); }

    void visit(const Node& node);
    void leaf(const Node& node);
    void apply(const Node& node);
    void call(const Node& node);
    void openBranch(Opcode jump);
    void closeLogical(Operator op);
    void conditionalArgument(std::uint32_t argument);
    void closeConditional();
    void fold(std::uint32_t begin, std::size_t constants);

    const std::vector<Type>* variableTypes_ = nullptr;
    std::string_view literals_;
    std::vector<Instruction> instructions_;
    std::vector<double> constants_;
    std::vector<LiteralSpan> literalSpans_;
    std::vector<Operand> operands_;
    std::vector<Branch> branches_;
    std::uint32_t textsOnStack_ = 0;
    std::uint32_t textDepth_ = 0;
    bool usesText_ = false;
};

}  // namespace varo::engine
