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
    for (const char32_t character :
         U"\x01\x7F\x80\u07FF\u0800中\uD7FF\uE000\uFFFF\U00010000𠀀\U0010FFFF") {
        std::string text;
        appendCharacter(text, character);
        const Decoded decoded = decode(text.data(), text.data() + text.size());
        ASSERT_EQ(decoded.character, character);
        ASSERT_EQ(decoded.bytes, text.size());
    }
}

TEST(Unicode, KnowsLettersOfEveryScript) {
    for (const auto& [characters, areLetters] :
         {std::pair<std::u32string_view, bool>{U"azAZéßΣя中ひ한אعกⅧ〇ₐ𝛼𠀀", true},
          {U"0_ +²₁，（√∑°℃…😀\u0301\uFFFD", false}}) {
        for (const char32_t character : characters) {
            EXPECT_EQ(isLetter(character), areLetters) << static_cast<std::uint32_t>(character);
        }
    }
}

TEST(Unicode, MapsLetterCase) {
    // A character, then the case-folded, the upper-case and the lower-case one.
    for (const std::u32string_view c :
         {U"AaAa", U"zzZz", U"1111", U"ÉéÉé", U"ΣσΣσ", U"ςσΣς", U"µμΜµ", U"ЯяЯя", U"ßßßß", U"ẞßẞß",
          U"ⅧⅷⅧⅷ", U"中中中中", U"ĀāĀā", U"āāĀā", U"\u212Ak\u212Ak", U"ＡａＡａ", U"𐐀𐐨𐐀𐐨"}) {
        EXPECT_EQ(foldCase(c[0]), c[1]) << static_cast<std::uint32_t>(c[0]);
        EXPECT_EQ(upperCase(c[0]), c[2]) << static_cast<std::uint32_t>(c[0]);
        EXPECT_EQ(lowerCase(c[0]), c[3]) << static_cast<std::uint32_t>(c[0]);
    }
}
