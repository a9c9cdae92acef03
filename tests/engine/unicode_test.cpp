#include "engine/text/unicode.h"

#include <gtest/gtest.h>

using namespace varo::engine;

TEST(Unicode, MalformedBytesReadAsReplacementCharacters) {
    EXPECT_EQ(wellFormed("a\x80z"), "a\uFFFDz");
    EXPECT_EQ(wellFormed("\xc0\xaf"), "\uFFFD\uFFFD");                      // overlong
    EXPECT_EQ(wellFormed("\xed\xa0\x80"), "\uFFFD\uFFFD\uFFFD");            // a surrogate
    EXPECT_EQ(wellFormed("\xf4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");  // beyond U+10FFFF
    EXPECT_EQ(wellFormed("\xf0\x9f\x98"), "\uFFFD\uFFFD\uFFFD");            // cut off
    EXPECT_TRUE(isWellFormed("aé中😀\uFFFD"));
    EXPECT_FALSE(isWellFormed("中\xe4"));
}

TEST(Unicode, CharactersSurviveEncodingAndDecoding) {
    for (char32_t character = 0; character <= 0x10FFFF; character += 7) {
        if (character >= 0xD800 && character <= 0xDFFF) {
            continue;
        }
        std::string text;
        appendCharacter(text, character);
        const Decoded decoded = decode(text.data(), text.data() + text.size());
        ASSERT_EQ(decoded.character, character);
        ASSERT_EQ(decoded.bytes, text.size());
    }
}

TEST(Unicode, KnowsLettersOfEveryScript) {
    for (const char32_t letter : U"azAZéßΣя中ひ한אعกⅧ〇ₐ𝛼𠀀") {
        EXPECT_TRUE(letter == 0 || isLetter(letter)) << static_cast<std::uint32_t>(letter);
    }
    for (const char32_t other : U"0_ +²₁，（√∑°℃…😀\u0301\uFFFD") {
        EXPECT_FALSE(other != 0 && isLetter(other)) << static_cast<std::uint32_t>(other);
    }
}

TEST(Unicode, MapsLetterCase) {
    struct Case {
        char32_t character, folded, upper, lower;
    };
    const std::initializer_list<Case> cases = {
        {U'A', U'a', U'A', U'a'},     {U'z', U'z', U'Z', U'z'}, {U'1', U'1', U'1', U'1'},
        {U'É', U'é', U'É', U'é'},     {U'Σ', U'σ', U'Σ', U'σ'}, {U'ς', U'σ', U'Σ', U'ς'},
        {U'µ', U'μ', U'Μ', U'µ'},     {U'Я', U'я', U'Я', U'я'}, {U'ß', U'ß', U'ß', U'ß'},
        {U'ẞ', U'ß', U'ẞ', U'ß'},     {U'Ⅷ', U'ⅷ', U'Ⅷ', U'ⅷ'}, {U'中', U'中', U'中', U'中'},
        {U'Ā', U'ā', U'Ā', U'ā'},     {U'ā', U'ā', U'Ā', U'ā'}, {U'\u212A', U'k', U'\u212A', U'k'},
        {U'Ａ', U'ａ', U'Ａ', U'ａ'}, {U'𐐀', U'𐐨', U'𐐀', U'𐐨'},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(foldCase(c.character), c.folded) << static_cast<std::uint32_t>(c.character);
        EXPECT_EQ(upperCase(c.character), c.upper) << static_cast<std::uint32_t>(c.character);
        EXPECT_EQ(lowerCase(c.character), c.lower) << static_cast<std::uint32_t>(c.character);
    }
}

TEST(Unicode, CountsAndFindsCharacters) {
    EXPECT_EQ(characterCount("aé中😀"), 4U);
    EXPECT_EQ(byteOffset("aé中😀", 2), 3U);
    EXPECT_EQ(byteOffset("aé中😀", 9), 10U);
    EXPECT_EQ(trimBlanks(" \u3000a b\t"), "a b");
    EXPECT_EQ(trimBlanks(" "), "");
}
