#include "engine/lexer.h"

#include "engine/number_scan.h"
#include "engine/unicode.h"

#include <algorithm>
#include <optional>

namespace varo::engine {

/// The character at the reading position, in its ASCII form; bytes is 0 at the end.
struct Lexer::Character {
    char32_t form = 0;
    std::uint32_t bytes = 0;

    bool isDigit() const { return form >= '0' && form <= '9'; }
    bool startsName() const { return form == '_' || isLetter(form); }
    bool continuesName() const { return startsName() || isDigit() || isSubscriptDigit(form); }
};

Lexer::Lexer(std::string_view formula, VariableTable& variables, std::string& literals)
    : formula_(formula),
      at_(formula.data()),
      end_(formula.data() + formula.size()),
      ascii_(std::all_of(formula.begin(), formula.end(),
                         [](char byte) { return static_cast<unsigned char>(byte) < 0x80; })),
      variables_(variables),
      literals_(literals) {}

Token Lexer::next() {
    skipBlanks();
    const Character character = peek();
    if (character.bytes == 0) {
        return begin(TokenKind::End);
    }
    if (character.startsName()) {
        return name();
    }
    if (character.isDigit() || character.form == '.') {
        return ascii_ ? number() : wideNumber();
    }
    if (character.form == '"' || character.form == '\'') {
        return text(character.form);
    }
    return symbol(character);
}

Lexer::Character Lexer::peek() const {
    if (at_ == end_) {
        return {};
    }
    const Decoded decoded = decode(at_, end_);
    const char32_t form =
        decoded.character < 0x80 ? decoded.character : asciiForm(decoded.character);
    return {form, decoded.bytes};
}

void Lexer::skipBlanks() {
    for (Character next = peek(); next.bytes > 0 && isBlank(next.form); next = peek()) {
        at_ += next.bytes;
    }
}

Token Lexer::begin(TokenKind kind) const {
    Token token;
    token.kind = kind;
    token.offset = static_cast<std::uint32_t>(at_ - formula_.data());
    return token;
}

Token Lexer::operatorToken(Operator op, const Character& character) {
    Token token = begin(TokenKind::Operator);
    token.op = op;
    at_ += character.bytes;
    return token;
}

Token Lexer::relation(const Character& character) {
    Token token = operatorToken(Operator::Less, character);
    const Character second = peek();
    const bool greater = character.form == '>';
    if (second.form == '=' && second.bytes > 0) {
        token.op = greater ? Operator::GreaterOrSame : Operator::LessOrSame;
        at_ += second.bytes;
    } else if (!greater && second.form == '>') {
        token.op = Operator::Different;
        at_ += second.bytes;
    } else {
        token.op = greater ? Operator::Greater : Operator::Less;
    }
    return token;
}

Token Lexer::symbol(const Character& character) {
    TokenKind kind = TokenKind::BadCharacter;
    switch (character.form) {
        case U'+':
            return operatorToken(Operator::Add, character);
        case U'-':
            return operatorToken(Operator::Subtract, character);
        case U'*':
            return operatorToken(Operator::Multiply, character);
        case U'/':
            return operatorToken(Operator::Divide, character);
        case U'^':
            return operatorToken(Operator::Power, character);
        case U'!':
            return operatorToken(Operator::Factorial, character);
        case U'=':
            return operatorToken(Operator::Same, character);
        case U'≠':
            return operatorToken(Operator::Different, character);
        case U'≤':
            return operatorToken(Operator::LessOrSame, character);
        case U'≥':
            return operatorToken(Operator::GreaterOrSame, character);
        case U'<':
        case U'>':
            return relation(character);
        case U'(':
            kind = TokenKind::LeftParenthesis;
            break;
        case U')':
            kind = TokenKind::RightParenthesis;
            break;
        case U',':
            kind = TokenKind::Comma;
            break;
        default:
            break;
    }
    const Token token = begin(kind);
    at_ += character.bytes;
    return token;
}

Token Lexer::number() {
    Token token = begin(TokenKind::Number);
    const char* const after = scanNumber(at_, end_, token.number);
    if (after == at_) {
        token.kind = TokenKind::BadCharacter;
        ++at_;
    } else {
        at_ = after;
    }
    return token;
}

Token Lexer::wideNumber() {
    Token token = begin(TokenKind::Number);
    digits_.clear();
    const auto take = [this](const Character& character) {
        digits_ += static_cast<char>(character.form);
        at_ += character.bytes;
    };
    const auto takeDigits = [this, &take] {
        const std::size_t before = digits_.size();
        for (Character next = peek(); next.isDigit(); next = peek()) {
            take(next);
        }
        return digits_.size() > before;
    };
    bool anyDigit = takeDigits();
    if (const Character next = peek(); next.form == '.') {
        take(next);
        anyDigit = takeDigits() || anyDigit;
    }
    if (!anyDigit) {
        token.kind = TokenKind::BadCharacter;
        return token;
    }
    const char* const beforeExponent = at_;
    const std::size_t digitsBeforeExponent = digits_.size();
    if (const Character next = peek(); next.form == 'e' || next.form == 'E') {
        take(next);
        if (const Character sign = peek(); sign.form == '+' || sign.form == '-') {
            take(sign);
        }
        if (!takeDigits()) {
            at_ = beforeExponent;
            digits_.resize(digitsBeforeExponent);
        }
    }
    scanNumber(digits_.data(), digits_.data() + digits_.size(), token.number);
    return token;
}

Token Lexer::text(char32_t quote) {
    Token token = begin(TokenKind::Text);
    token.first = static_cast<std::uint32_t>(literals_.size());
    at_ += peek().bytes;
    const char* copied = at_;
    for (Character next = peek(); next.bytes > 0; next = peek()) {
        if (next.form != quote) {
            at_ += next.bytes;
            continue;
        }
        literals_.append(copied, at_);
        at_ += next.bytes;
        const Character after = peek();
        if (after.bytes == 0 || after.form != quote) {
            token.size = static_cast<std::uint32_t>(literals_.size()) - token.first;
            return token;
        }
        literals_ += static_cast<char>(quote);
        at_ += after.bytes;
        copied = at_;
    }
    token.kind = TokenKind::UnclosedText;
    return token;
}

Token Lexer::name() {
    Token token = begin(TokenKind::Variable);
    const char* const first = at_;
    spelled_.clear();
    folded_.clear();
    for (Character next = peek(); next.bytes > 0 && next.continuesName(); next = peek()) {
        appendCharacter(spelled_, next.form);
        appendCharacter(folded_, foldCase(next.form));
        at_ += next.bytes;
    }
    token.size = static_cast<std::uint32_t>(at_ - first);
    const Word word = wordNamed(folded_);
    if (word.kind == Word::Kind::Operator) {
        token.kind = TokenKind::Operator;
        token.op = word.op;
        return token;
    }
    skipBlanks();
    if (peek().form == '(') {
        token.kind = TokenKind::Function;
        token.function = word.function;
    } else if (word.kind == Word::Kind::Constant) {
        token.kind = TokenKind::Number;
        token.number = word.number;
    } else if (word.kind == Word::Kind::Result) {
        token.kind = TokenKind::Result;
    } else {
        token.first = variables_.intern(spelled_, folded_);
    }
    return token;
}

}  // namespace varo::engine
