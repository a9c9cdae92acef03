#pragma once

#include <QtGlobal>

#include <span>

namespace varo::access {

/// What an index has for a character.
struct CharacterKey {
    char16_t character;
    quint16 code;        ///< one byte where it is less than 0x100, else two, the higher one first
    quint8 mark;         ///< 0 when it has none; such as that of an accent
    bool isPunctuation;  ///< the code does not stand among the others but behind them
};

/// Chinese characters from `first` on, up to the next run or the last one of them, whose codes of
/// two bytes follow each other; the second byte is never 0 or 1.
struct IdeographRun {
    char16_t first;
    quint16 code;
};

inline constexpr char16_t kFirstIdeograph = 0x4E00;
inline constexpr char16_t kLastIdeograph = 0x9FA5;

/// The characters of a sort order whose codes are known, in ascending order.
struct SortTable {
    std::span<const CharacterKey> characters;
    std::span<const IdeographRun> ideographs;
    bool hasWideIdeographs;  ///< the bytes FD FF stand before the code of one
};

/// The sort orders "General Legacy" and "General".
const SortTable& legacySortTable();
const SortTable& generalSortTable();

}  // namespace varo::access
