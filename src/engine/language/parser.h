#pragma once

#include "engine/error.h"
#include "engine/language/lexer.h"
#include "engine/language/node.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace varo::engine {

/// An operator that waits for its right operand, or an open parenthesis.
struct Pending {
    enum class Kind : std::uint8_t { Bottom, Group, Call, Prefix, Binary };
    Kind kind{};
    std::uint8_t level = 0;  ///< of an operator; 0 for the rest
    Operator op{};
    Function function{};
    std::uint32_t offset = 0;
    std::uint32_t arguments = 0;  ///< of a call, so far complete
};

/// The open operators and parentheses at one place of a formula, with a Bottom below them.
using PendingStack = std::array<Pending, kMaxNesting + 1>;

/// A syntax error: its code and where it is, in bytes.
struct SyntaxError {
    ErrorCode code = ErrorCode::None;
    std::uint32_t offset = 0;
};

/// Reads a formula by operator precedence, with a stack of its own, so that no input makes it
/// recurse.
class Parser {
  public:
    /// What the tree is to be good for: the types need every mark in it, numbers only those that
    /// change the flow or the place of operands.
    enum class Marks : bool { ForNumbers, ForTypes };

    /// `tree` is filled from empty, `pending` is memory to work with; all must outlive the parser.
    Parser(Lexer& lexer, Marks marks, Tree& tree, PendingStack& pending)
        : lexer_(lexer), marks_(marks), tree_(tree), bottom_(pending.data()), top_(bottom_) {}

    /// Reads the formula up to its end or first error. After an error the tree is made whole with
    /// what was read so far, so that the types of the variables can be told, and the lexer is read
    /// to its end.
    SyntaxError run();

    /// After run(): true when everything in the formula is a number and every function gets the
    /// arguments that it takes, so that there is nothing to find out about types and the marks for
    /// numbers are enough.
    bool isPlainlyNumeric() const { return isPlainlyNumeric_; }

  private:
    bool operand(const Token& token);
    bool afterOperand(const Token& token);
    bool binaryOperator(const Token& token);
    bool closeParenthesis(const Token& token);
    bool open(const Pending& pending);
    bool prefixOperator(const Token& token);
    TokenKind skipToken();
    bool fail(ErrorCode code, std::uint32_t offset);
    void complete();

    void emit(NodeKind kind, const Token& token);
    void applyTighterThan(std::uint8_t level);
    void completeArgument();
    void closeTop();

    Lexer& lexer_;
    Marks marks_;
    Tree& tree_;
    Pending* bottom_;
    Pending* top_;
    SyntaxError error_;
    std::size_t openParentheses_ = 0;
    bool operandWanted_ = true;
    bool isPlainlyNumeric_ = true;
};

}  // namespace varo::engine
