#include "engine/language/vocabulary.h"

#include <algorithm>

namespace varo::engine {
namespace {

struct Entry {
    std::string_view spelling;
    Word word;
};

constexpr std::size_t kOtherWords = 9;

constexpr Word operatorWord(Operator op) {
    return {Word::Kind::Operator, op};
}

constexpr Word constantWord(double number) {
    return {Word::Kind::Constant, {}, Function::Unknown, number};
}

/// Every name that means something.
constexpr std::array<Entry, kOtherWords + kFunctionCount - 1> kWords = [] {
    std::array<Entry, kOtherWords + kFunctionCount - 1> words{{
        {"And", operatorWord(Operator::And)},
        {"Or", operatorWord(Operator::Or)},
        {"Not", operatorWord(Operator::Not)},
        {"Like", operatorWord(Operator::Like)},
        {"Equal", operatorWord(Operator::Equal)},
        {"pi", constantWord(3.141592653589793)},
        {"π", constantWord(3.141592653589793)},
        {"exp", constantWord(kE)},
        {"Result", {Word::Kind::Result}},
    }};
    for (std::size_t i = 1; i < kFunctionCount; ++i) {
        words[kOtherWords + i - 1] = {kFunctions[i].name,
                                      {Word::Kind::None, {}, static_cast<Function>(i)}};
    }
    return words;
}();

constexpr char folded(char character) {
    const bool upper = character >= 'A' && character <= 'Z';
    return static_cast<char>(upper ? character + 32 : character);
}

constexpr std::size_t kShortest = 2;
constexpr std::size_t kLongest =
    std::max_element(kWords.begin(), kWords.end(), [](const Entry& a, const Entry& b) {
        return a.spelling.size() < b.spelling.size();
    })->spelling.size();

constexpr std::size_t kSlots = 256;

/// A hash without collisions among the words; findFactors() finds the factors.
struct Hash {
    std::uint32_t first;
    std::uint32_t middle;
    std::uint32_t last;

    constexpr std::size_t operator()(std::string_view word) const {
        const auto at = [word](std::size_t index) {
            return static_cast<std::uint32_t>(static_cast<unsigned char>(folded(word[index])));
        };
        const std::size_t size = word.size();
        return (at(0) * first + at(size / 2) * middle + at(size - 1) * last + size) % kSlots;
    }
};

constexpr bool separates(const Hash& hash) {
    std::array<bool, kSlots> taken{};
    for (const Entry& entry : kWords) {
        bool& slot = taken[hash(entry.spelling)];
        if (slot) {
            return false;
        }
        slot = true;
    }
    return true;
}

constexpr Hash findFactors() {
    for (std::uint32_t i = 1;; ++i) {
        const Hash hash{i * 5 % 251, i * 11 % 241, i * 23 % 239};
        if (separates(hash)) {
            return hash;
        }
    }
}

constexpr Hash kHash = findFactors();

struct Slot {
    std::array<char, kLongest> spelling{};  // case-folded
    std::uint8_t size = 0;                  // 0: no word
    Word word;
};

constexpr std::array<Slot, kSlots> kTable = [] {
    std::array<Slot, kSlots> table{};
    for (const Entry& entry : kWords) {
        Slot& slot = table[kHash(entry.spelling)];
        std::transform(entry.spelling.begin(), entry.spelling.end(), slot.spelling.begin(), folded);
        slot.size = static_cast<std::uint8_t>(entry.spelling.size());
        slot.word = entry.word;
    }
    return table;
}();

}  // namespace

const Word& wordNamed(std::string_view foldedName) {
    static constexpr Word kNothing;
    if (foldedName.size() < kShortest || foldedName.size() > kLongest) {
        return kNothing;
    }
    const Slot& slot = kTable[kHash(foldedName)];
    const bool same = std::string_view(slot.spelling.data(), slot.size) == foldedName;
    return same ? slot.word : kNothing;
}

}  // namespace varo::engine
