#pragma once

#include "engine/language/node.h"
#include "engine/language/variable_table.h"
#include "engine/language/vocabulary.h"

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

/// What a token does not use is left as it was.
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

    /// Makes `token` the next one; TokenKind::End for ever after the last.
    void next(Token& token);

  private:
    struct Character;

    Character peek() const;
    bool opensParenthesis();
    void start(Token& token, TokenKind kind) const;
    void wideToken(Token& token);
    void operatorToken(Token& token, Operator op, std::uint32_t bytes);
    void relation(Token& token, bool greater, std::uint32_t bytes);
    void symbol(Token& token, char32_t form, std::uint32_t bytes);
    void number(Token& token);
    void wideNumber(Token& token);
    void text(Token& token, char32_t quote);
    void name(Token& token);
    void letter(Token& token);
    void wideName(Token& token);
    void named(Token& token, std::string_view spelled, std::string_view folded);

    const char* begin_;
    const char* at_;
    const char* end_;
    Space& space_;
};

}  // namespace varo::engine
