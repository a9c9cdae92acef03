#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Characters and UTF-8. A character is one Unicode code point; a byte that belongs to no
/// well-formed character reads as U+FFFD.
namespace varo::engine {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// A character and the number of bytes it takes up.
struct Decoded {
    char32_t character;
    std::uint32_t bytes;
};

/// The character at `text`, which lies before `end`; U+FFFD and 1 for a byte that is not UTF-8.
Decoded decodeBeyondAscii(const char* text, const char* end);

inline Decoded decode(const char* text, const char* end) {
    const auto byte = static_cast<unsigned char>(*text);
    return byte < 0x80 ? Decoded{byte, 1} : decodeBeyondAscii(text, end);
}

/// Appends `character` to `text`.
void appendCharacter(std::string& text, char32_t character);

/// True when `text` is UTF-8 throughout.
bool isWellFormed(std::string_view text);

/// `text` with U+FFFD for every byte that is not UTF-8.
std::string wellFormed(std::string_view text);

/// The number of characters in `text`, which must be well-formed.
std::size_t characterCount(std::string_view text);

/// Where the character number `index` (from 0) begins in the well-formed `text`, in bytes; the size
/// of the text when there is none.
std::size_t byteOffset(std::string_view text, std::size_t index);

/// True for letters and letter numbers of every script.
bool isLetter(char32_t character);

/// True for the digits U+2080 to U+2089.
constexpr bool isSubscriptDigit(char32_t character) {
    return character >= 0x2080 && character <= 0x2089;
}

/// True for the characters that separate words: space, tab, line ends and the wide blanks of
/// typesetting.
constexpr bool isBlank(char32_t character) {
    return character == ' ' || (character >= 0x09 && character <= 0x0D) || character == 0xA0 ||
           character == 0x1680 || (character >= 0x2000 && character <= 0x200A) ||
           character == 0x2028 || character == 0x2029 || character == 0x202F ||
           character == 0x205F || character == 0x3000;
}

/// `text` without leading and trailing blanks.
std::string_view trimBlanks(std::string_view text);

/// The simple case mappings; a character without one maps to itself.
char32_t foldCase(char32_t character);
char32_t upperCase(char32_t character);
char32_t lowerCase(char32_t character);

/// The ASCII character that a full-width form, a typographic quote or a typographic operator sign
/// stands for; other characters map to themselves. `≥ ≤ ≠` have no single counterpart and stay.
char32_t asciiForm(char32_t character);

}  // namespace varo::engine
