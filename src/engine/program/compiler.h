#pragma once

#include "engine/language/node.h"
#include "engine/language/vocabulary.h"
#include "engine/machine/instruction.h"
#include "engine/program/code_writer.h"
#include "engine/value_type.h"

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
    using Order = CodeWriter::Order;

    /// `variableTypes` and `literals` must outlive what code() answers. An empty `variableTypes`
    /// means numbers only.
    void run(Order order, const Tree& tree, const std::vector<Type>& variableTypes,
             std::string_view literals);

    /// The code of the last run(), valid until the next. Only code in the fastest order has steps
    /// for the fast machine.
    Code code() const;

  private:
    /// A condition whose later operands are being compiled.
    struct Branch {
        std::optional<bool> known;  ///< its value; then it has no code
        std::uint32_t begin = 0;    ///< the first instruction of the operand being compiled
        std::uint32_t jump = 0;     ///< the jump to be given its target
    };

    void visit(const Node& node);
    void variable(std::uint32_t index);
    void literal(const Extent& extent);
    void apply(Operator op);
    void textRelation(Operator op);
    void argument(Function function, std::uint32_t number);
    void call(Function function, std::uint32_t arguments);
    void callOfTwo(Function function);
    void callText(Function function, std::uint32_t arguments);
    void openBranch(Other jump);
    void closeLogical(Operator op);
    void conditionalArgument(std::uint32_t argument);
    void closeConditional();

    CodeWriter writer_;
    const std::vector<Type>* variableTypes_ = nullptr;
    std::string_view literals_;
    std::vector<LiteralSpan> literalSpans_;
    std::vector<Branch> branches_;
    bool usesText_ = false;
};

}  // namespace varo::engine
