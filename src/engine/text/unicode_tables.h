#pragma once

#include <cstdint>
#include <span>

/// Facts about characters beyond ASCII, as sorted ranges. Written by tools/make_unicode_tables.pl.
namespace varo::engine {

/// The characters first ... last.
struct CharacterRange {
    char32_t first;
    char32_t last;
};

/// Every step-th of the characters first ... last maps to the character `delta` further on.
struct CaseRange {
    char32_t first;
    char32_t last;
    std::int32_t delta;
    std::uint8_t step;
};

extern const std::span<const CharacterRange> kLetterRanges;  ///< letters and letter numbers
extern const std::span<const CaseRange> kFoldRanges;         ///< simple case folding
extern const std::span<const CaseRange> kUpperRanges;        ///< simple upper case
extern const std::span<const CaseRange> kLowerRanges;        ///< simple lower case

}  // namespace varo::engine
