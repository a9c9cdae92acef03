#pragma once

#include "engine/node.h"
#include "engine/variable_table.h"
#include "engine/vocabulary.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace varo::engine {

enum class TokenKind : std::uint8_t {
    Number,
    Text,
    Variable,
    Result,    ///< the output variable
    Function,  ///< a name before a parenthesis
    Operator,
    LeftParenthesis,
    RightParenthesis,
    Comma,
    BadCharacter,
    UnclosedText,
    End,
};

struct Token {
    TokenKind kind = TokenKind::End;
    Operator op{};             ///< Operator; a sign reads as Add or Subtract
    Function function{};       ///< Function
    std::uint32_t offset = 0;  ///< where in the formula, in bytes
    union {
        double number;    ///< Number
        Extent extent{};  ///< Variable: its index; Text: its bytes in the literals; Function:
                          ///< `size` is the bytes of the name in the formula
    };
};

/// Cuts a formula into tokens, from left to right. It collects the variables on its way, so that
/// reading on to the end makes their list complete whatever is wrong with the formula.
class Lexer {
  public:
    /// What the lexer needs besides the formula; may be used for one formula after the other.
    struct Space {
        VariableTable variables;
        std::string literals;  ///< the texts of the formula, one after the other
        std::string spelled;
        std::string folded;
    };

    /// Both must outlive the lexer. `formula` is shorter than 4 GiB.
    Lexer(std::string_view formula, Space& space);

    /// The next token; TokenKind::End for ever after the last.
    Token next();

  private:
    struct Character;

    Character peek() const;
    bool opensParenthesis();
    Token wideToken();
    Token operatorToken(Operator op, std::uint32_t bytes);
    Token relation(bool greater, std::uint32_t bytes);
    Token symbol(char32_t form, std::uint32_t bytes);
    Token number();
    Token wideNumber();
    Token text(char32_t quote);
    Token name();
    Token letter();
    Token wideName();
    Token named(Token token, std::string_view spelled, std::string_view folded);
    Token begin(TokenKind kind) const;

    const char* begin_;
    const char* at_;
    const char* end_;
    Space& space_;
};

}  // namespace varo::engine
