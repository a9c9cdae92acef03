#include "engine/text/unicode.h"

#include "engine/text/unicode_tables.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace varo::engine {
namespace {

constexpr bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

template <class Range>
const Range* findRange(std::span<const Range> ranges, char32_t character) {
    const auto after =
        std::upper_bound(ranges.begin(), ranges.end(), character,
                         [](char32_t wanted, const Range& range) { return wanted < range.first; });
    if (after == ranges.begin()) {
        return nullptr;
    }
    const Range* range = &*(after - 1);
    return character <= range->last ? range : nullptr;
}

char32_t mapCase(std::span<const CaseRange> ranges, char32_t character) {
    const CaseRange* range = findRange(ranges, character);
    if (range == nullptr || (character - range->first) % range->step != 0) {
        return character;
    }
    return static_cast<char32_t>(static_cast<std::int32_t>(character) + range->delta);
}

constexpr bool isAsciiUpper(char32_t character) {
    return character >= 'A' && character <= 'Z';
}

constexpr bool isAsciiLower(char32_t character) {
    return character >= 'a' && character <= 'z';
}

}  // namespace

Decoded decodeBeyondAscii(const char* text, const char* end) {
    const auto byteAt = [text](int index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = byteAt(0);
    const auto available = end - text;
    constexpr Decoded kMalformed{kReplacementCharacter, 1};
    if (lead >= 0xC2 && lead <= 0xDF) {
        if (available < 2 || !isContinuation(byteAt(1))) {
            return kMalformed;
        }
        return {static_cast<char32_t>((lead & 0x1F) << 6 | (byteAt(1) & 0x3F)), 2};
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        if (available < 3 || !isContinuation(byteAt(1)) || !isContinuation(byteAt(2))) {
            return kMalformed;
        }
        const auto character = static_cast<char32_t>((lead & 0x0F) << 12 | (byteAt(1) & 0x3F) << 6 |
                                                     (byteAt(2) & 0x3F));
        const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
        return character < 0x800 || isSurrogate ? kMalformed : Decoded{character, 3};
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        if (available < 4 || !isContinuation(byteAt(1)) || !isContinuation(byteAt(2)) ||
            !isContinuation(byteAt(3))) {
            return kMalformed;
        }
        const auto character =
            static_cast<char32_t>((lead & 0x07) << 18 | (byteAt(1) & 0x3F) << 12 |
                                  (byteAt(2) & 0x3F) << 6 | (byteAt(3) & 0x3F));
        return character < 0x10000 || character > 0x10FFFF ? kMalformed : Decoded{character, 4};
    }
    return kMalformed;
}

void appendCharacter(std::string& text, char32_t character) {
    const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0 | character >> 6);
        append(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    }
}

bool isWellFormed(std::string_view text) {
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        if (end - at >= 8) {
            std::uint64_t eight = 0;
            std::memcpy(&eight, at, 8);
            if ((eight & 0x8080808080808080U) == 0) {
                at += 8;
                continue;
            }
        }
        const Decoded next = decode(at, end);
        if (next.character == kReplacementCharacter && next.bytes == 1) {
            return false;
        }
        at += next.bytes;
    }
    return true;
}

std::string wellFormed(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        const Decoded next = decode(at, end);
        appendCharacter(result, next.character);
        at += next.bytes;
    }
    return result;
}

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return !isContinuation(static_cast<unsigned char>(byte));
    }));
}

std::size_t byteOffset(std::string_view text, std::size_t index) {
    std::size_t at = 0;
    for (; index > 0 && at < text.size(); --index) {
        ++at;
        while (at < text.size() && isContinuation(static_cast<unsigned char>(text[at]))) {
            ++at;
        }
    }
    return at;
}

bool isLetter(char32_t character) {
    if (character < 0x80) {
        return isAsciiUpper(character) || isAsciiLower(character);
    }
    return findRange(kLetterRanges, character) != nullptr;
}

std::string_view trimBlanks(std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* first = end;
    const char* last = end;
    bool seen = false;
    for (const char* at = text.data(); at != end;) {
        const Decoded next = decode(at, end);
        if (!isBlank(next.character)) {
            first = seen ? first : at;
            last = at + next.bytes;
            seen = true;
        }
        at += next.bytes;
    }
    return {first, static_cast<std::size_t>(last - first)};
}

char32_t foldCase(char32_t character) {
    if (character < 0x80) {
        return isAsciiUpper(character) ? character + 32 : character;
    }
    return mapCase(kFoldRanges, character);
}

char32_t upperCase(char32_t character) {
    if (character < 0x80) {
        return isAsciiLower(character) ? character - 32 : character;
    }
    return mapCase(kUpperRanges, character);
}

char32_t lowerCase(char32_t character) {
    if (character < 0x80) {
        return isAsciiUpper(character) ? character + 32 : character;
    }
    return mapCase(kLowerRanges, character);
}

char32_t asciiForm(char32_t character) {
    if (character >= 0xFF01 && character <= 0xFF5E) {
        return character - 0xFF01 + '!';
    }
    switch (character) {
        case U'×':
        case U'·':
            return U'*';
        case U'÷':
            return U'/';
        case U'\u2212':
            return U'-';
        case U'“':
        case U'”':
            return U'"';
        case U'‘':
        case U'’':
            return U'\'';
        default:
            return character;
    }
}

}  // namespace varo::engine
