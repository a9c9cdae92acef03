#pragma once

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
    double number = 0;         ///< Number
    std::uint32_t first = 0;   ///< Variable: its index; Text: its first byte in the literals
    std::uint32_t size = 0;    ///< Text: its bytes; Function: bytes of the name in the formula
};

/// Cuts a formula into tokens, from left to right. It collects the variables on its way, so that
/// reading on to the end makes their list complete whatever is wrong with the formula.
class Lexer {
  public:
    /// The three must outlive the lexer. `formula` is shorter than 4 GiB.
    Lexer(std::string_view formula, VariableTable& variables, std::string& literals);

    /// The next token; TokenKind::End for ever after the last.
    Token next();

  private:
    struct Character;

    Character peek() const;
    void skipBlanks();
    Token operatorToken(Operator op, const Character& character);
    Token relation(const Character& character);
    Token symbol(const Character& character);
    Token number();
    Token wideNumber();
    Token text(char32_t quote);
    Token name();
    Token begin(TokenKind kind) const;

    std::string_view formula_;
    const char* at_;
    const char* end_;
    bool ascii_;
    VariableTable& variables_;
    std::string& literals_;
    std::string spelled_;
    std::string folded_;
    std::string digits_;
};

}  // namespace varo::engine
