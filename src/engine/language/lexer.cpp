#include "engine/language/lexer.h"

#include "engine/text/number_scan.h"
#include "engine/text/unicode.h"

#include <array>

namespace varo::engine {
namespace {

/// What an ASCII character can begin; Wide is every byte beyond ASCII.
enum class Class : std::uint8_t { Symbol, Blank, Lower, Upper, Digit, Point, Quote, Wide };

constexpr std::array<Class, 256> kClasses = [] {
    std::array<Class, 256> classes{};
    for (std::size_t byte = 0; byte < classes.size(); ++byte) {
        Class& found = classes[byte];
        if (byte >= 0x80) {
            found = Class::Wide;
        } else if (isBlank(static_cast<char32_t>(byte))) {
            found = Class::Blank;
        } else if ((byte >= 'a' && byte <= 'z') || byte == '_') {
            found = Class::Lower;
        } else if (byte >= 'A' && byte <= 'Z') {
            found = Class::Upper;
        } else if (byte >= '0' && byte <= '9') {
            found = Class::Digit;
        } else if (byte == '.') {
            found = Class::Point;
        } else if (byte == '"' || byte == '\'') {
            found = Class::Quote;
        }
    }
    return classes;
}();

/// True for Wide, too, since only the whole character tells.
constexpr bool continuesName(Class found) {
    return found == Class::Lower || found == Class::Upper || found == Class::Digit ||
           found == Class::Wide;
}

Class classOf(char byte) {
    return kClasses[static_cast<unsigned char>(byte)];
}

}  // namespace

/// The character at the reading position, in its ASCII form; bytes is 0 at the end.
struct Lexer::Character {
    char32_t form = 0;
    std::uint32_t bytes = 0;

    bool isDigit() const { return form >= '0' && form <= '9'; }
    bool startsName() const { return form == '_' || isLetter(form); }
    bool continuesName() const { return startsName() || isDigit() || isSubscriptDigit(form); }
};

Lexer::Lexer(std::string_view formula, Space& space)
    : begin_(formula.data()),
      at_(formula.data()),
      end_(formula.data() + formula.size()),
      space_(space) {}

void Lexer::next(Token& token) {
    for (; at_ != end_; ++at_) {
        switch (classOf(*at_)) {
            case Class::Blank:
                break;
            case Class::Lower:
            case Class::Upper:
                return name(token);
            case Class::Digit:
            case Class::Point:
                return number(token);
            case Class::Quote:
                return text(token, static_cast<char32_t>(*at_));
            case Class::Symbol:
                return symbol(token, static_cast<char32_t>(*at_), 1);
            case Class::Wide: {
                const Character character = peek();
                if (!isBlank(character.form)) {
                    return wideToken(token);
                }
                at_ += character.bytes - 1;
                break;
            }
        }
    }
    start(token, TokenKind::End);
}

/// A token that begins with a character beyond ASCII, which is no blank.
void Lexer::wideToken(Token& token) {
    const Character character = peek();
    if (character.startsName()) {
        return wideName(token);
    }
    if (character.isDigit() || character.form == '.') {
        return wideNumber(token);
    }
    if (character.form == '"' || character.form == '\'') {
        return text(token, character.form);
    }
    return symbol(token, character.form, character.bytes);
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

void Lexer::start(Token& token, TokenKind kind) const {
    token.kind = kind;
    token.offset = static_cast<std::uint32_t>(at_ - begin_);
}

void Lexer::operatorToken(Token& token, Operator op, std::uint32_t bytes) {
    start(token, TokenKind::Operator);
    token.op = op;
    at_ += bytes;
}

void Lexer::relation(Token& token, bool greater, std::uint32_t bytes) {
    operatorToken(token, greater ? Operator::Greater : Operator::Less, bytes);
    const Character second = peek();
    if (second.form == '=') {
        token.op = greater ? Operator::GreaterOrSame : Operator::LessOrSame;
        at_ += second.bytes;
    } else if (!greater && second.form == '>') {
        token.op = Operator::Different;
        at_ += second.bytes;
    }
}

void Lexer::symbol(Token& token, char32_t form, std::uint32_t bytes) {
    TokenKind kind = TokenKind::BadCharacter;
    switch (form) {
        case U'+':
            return operatorToken(token, Operator::Add, bytes);
        case U'-':
            return operatorToken(token, Operator::Subtract, bytes);
        case U'*':
            return operatorToken(token, Operator::Multiply, bytes);
        case U'/':
            return operatorToken(token, Operator::Divide, bytes);
        case U'^':
            return operatorToken(token, Operator::Power, bytes);
        case U'!':
            return operatorToken(token, Operator::Factorial, bytes);
        case U'=':
            return operatorToken(token, Operator::Same, bytes);
        case U'≠':
            return operatorToken(token, Operator::Different, bytes);
        case U'≤':
            return operatorToken(token, Operator::LessOrSame, bytes);
        case U'≥':
            return operatorToken(token, Operator::GreaterOrSame, bytes);
        case U'<':
        case U'>':
            return relation(token, form == U'>', bytes);
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
    start(token, kind);
    at_ += bytes;
}

void Lexer::number(Token& token) {
    start(token, TokenKind::Number);
    token.number = 0;
    const char* const after = scanNumber(at_, end_, token.number);
    // The number may continue in full-width characters, and so may an exponent after it.
    const bool mayContinue =
        after == at_ ||
        (after != end_ && (classOf(*after) == Class::Wide || *after == 'e' || *after == 'E'));
    if (mayContinue) {
        return wideNumber(token);
    }
    at_ = after;
}

void Lexer::wideNumber(Token& token) {
    start(token, TokenKind::Number);
    std::string digits;
    const auto take = [this, &digits](const Character& character) {
        digits += static_cast<char>(character.form);
        at_ += character.bytes;
    };
    const auto takeDigits = [this, &digits, &take] {
        const std::size_t before = digits.size();
        for (Character next = peek(); next.isDigit(); next = peek()) {
            take(next);
        }
        return digits.size() > before;
    };
    bool anyDigit = takeDigits();
    if (const Character next = peek(); next.form == '.') {
        take(next);
        anyDigit = takeDigits() || anyDigit;
    }
    if (!anyDigit) {
        token.kind = TokenKind::BadCharacter;
        return;
    }
    const char* const beforeExponent = at_;
    const std::size_t digitsBeforeExponent = digits.size();
    if (const Character next = peek(); next.form == 'e' || next.form == 'E') {
        take(next);
        if (const Character sign = peek(); sign.form == '+' || sign.form == '-') {
            take(sign);
        }
        if (!takeDigits()) {
            at_ = beforeExponent;
            digits.resize(digitsBeforeExponent);
        }
    }
    token.number = 0;
    scanNumber(digits.data(), digits.data() + digits.size(), token.number);
}

void Lexer::text(Token& token, char32_t quote) {
    start(token, TokenKind::Text);
    token.extent.first = static_cast<std::uint32_t>(space_.literals.size());
    at_ += peek().bytes;
    const char* copied = at_;
    for (Character next = peek(); next.bytes > 0; next = peek()) {
        if (next.form != quote) {
            at_ += next.bytes;
            continue;
        }
        space_.literals.append(copied, at_);
        at_ += next.bytes;
        const Character after = peek();
        if (after.bytes == 0 || after.form != quote) {
            token.extent.size =
                static_cast<std::uint32_t>(space_.literals.size()) - token.extent.first;
            return;
        }
        space_.literals += static_cast<char>(quote);
        at_ += after.bytes;
        copied = at_;
    }
    token.kind = TokenKind::UnclosedText;
}

void Lexer::name(Token& token) {
    if (at_ + 1 == end_ || !continuesName(classOf(at_[1]))) {
        return letter(token);
    }
    start(token, TokenKind::Variable);
    const char* at = at_;
    bool anyUpper = false;
    Class found = classOf(*at);
    while (continuesName(found) && found != Class::Wide) {
        anyUpper = anyUpper || found == Class::Upper;
        ++at;
        found = at != end_ ? classOf(*at) : Class::Blank;
    }
    if (found == Class::Wide) {
        return wideName(token);  // the name may continue
    }
    const std::string_view spelled(at_, static_cast<std::size_t>(at - at_));
    at_ = at;
    if (!anyUpper) {
        return named(token, spelled, spelled);
    }
    space_.folded.clear();
    appendFolded(space_.folded, spelled);
    return named(token, spelled, space_.folded);
}

/// A name of one letter, as most variables have; it is no word of the language.
void Lexer::letter(Token& token) {
    start(token, TokenKind::Variable);
    const std::string_view spelled(at_++, 1);
    if (opensParenthesis()) {
        token.kind = TokenKind::Function;
        token.function = Function::Unknown;
        token.extent.size = 1;
        return;
    }
    const char lower = static_cast<char>(spelled.front() + ('a' - 'A'));
    const bool isUpper = classOf(spelled.front()) == Class::Upper;
    const std::string_view folded = isUpper ? std::string_view(&lower, 1) : spelled;
    token.extent.first = space_.variables.internLetter(spelled, folded);
}

/// A name with characters beyond ASCII in it or behind it.
void Lexer::wideName(Token& token) {
    start(token, TokenKind::Variable);
    space_.spelled.clear();
    space_.folded.clear();
    for (Character next = peek(); next.bytes > 0 && next.continuesName(); next = peek()) {
        appendCharacter(space_.spelled, next.form);
        appendCharacter(space_.folded, foldCase(next.form));
        at_ += next.bytes;
    }
    return named(token, space_.spelled, space_.folded);
}

/// What the name just read stands for; `token` tells where it begins.
void Lexer::named(Token& token, std::string_view spelled, std::string_view folded) {
    const auto size = static_cast<std::uint32_t>(at_ - begin_) - token.offset;
    const Word& word = wordNamed(folded);
    if (word.kind == Word::Kind::Operator) {
        token.kind = TokenKind::Operator;
        token.op = word.op;
    } else if (opensParenthesis()) {
        token.kind = TokenKind::Function;
        token.function = word.function;
        token.extent.size = size;
    } else if (word.kind == Word::Kind::Constant) {
        token.kind = TokenKind::Number;
        token.number = word.number;
    } else if (word.kind == Word::Kind::Result) {
        token.kind = TokenKind::Result;
    } else {
        token.extent.first = space_.variables.intern(spelled, folded);
    }
}

/// True when the next character that is no blank is an opening parenthesis; blanks are skipped.
bool Lexer::opensParenthesis() {
    while (at_ != end_ && classOf(*at_) == Class::Blank) {
        ++at_;
    }
    if (at_ != end_ && classOf(*at_) != Class::Wide) {
        return *at_ == '(';
    }
    Character next = peek();
    while (next.bytes > 0 && isBlank(next.form)) {
        at_ += next.bytes;
        next = peek();
    }
    return next.form == '(';
}

}  // namespace varo::engine
