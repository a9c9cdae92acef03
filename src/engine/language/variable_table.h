#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace varo::engine {

/// Appends the case-folded form of `name` to `folded`; full-width forms become ASCII first.
void appendFolded(std::string& folded, std::string_view name);

/// A view of the names in a VariableTable, or of a copy of its arrays.
struct VariableNames {
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

    struct Entry {
        std::uint32_t hash;   ///< only when there are slots
        std::uint32_t begin;  ///< of the name in `characters`
        std::uint32_t nameSize;
        std::uint32_t foldedBegin;  ///< of its case-folded form
        std::uint32_t foldedSize;
    };

    /// A few names are found by looking at each of them.
    static constexpr std::size_t kMostWithoutSlots = 8;

    std::span<const Entry> entries;
    /// A hash table of indices and kNone, a power of two in size; empty for a few names.
    std::span<const std::uint32_t> slots;
    std::string_view characters;  ///< the formula, and behind it what names it does not spell out

    std::string_view name(std::uint32_t index) const {
        return characters.substr(entries[index].begin, entries[index].nameSize);
    }

    std::string_view foldedName(std::uint32_t index) const {
        return characters.substr(entries[index].foldedBegin, entries[index].foldedSize);
    }

    /// The index of the variable with that case-folded name, or kNone.
    std::uint32_t find(std::string_view folded) const;
};

/// The variables of a formula while it is read, each with its index in order of first occurrence.
class VariableTable {
  public:
    /// Forgets the variables, but keeps the memory. `formula` must outlive what names() answers.
    void start(std::string_view formula);

    /// The index of the variable with that case-folded name; a new one, spelled `name`, if there
    /// was none.
    std::uint32_t intern(std::string_view name, std::string_view folded);

    /// The same for a name whose case-folded form is one ASCII letter or an underscore.
    std::uint32_t internLetter(std::string_view name, std::string_view folded) {
        std::uint32_t& after = afterLetters_[static_cast<unsigned char>(folded.front())];
        if (after == 0) {
            after = add(name, folded) + 1;
            letters_ += folded.front();
        }
        return after - 1;
    }

    std::uint32_t size() const { return static_cast<std::uint32_t>(entries_.size()); }

    /// Valid until the table changes.
    VariableNames names() const { return {entries_, slots_, characters()}; }

  private:
    std::string_view characters() const {
        return extended_.empty() ? formula_ : std::string_view(extended_);
    }
    std::uint32_t add(std::string_view name, std::string_view folded);
    std::uint32_t place(std::string_view characters);
    void makeSlots();

    std::string_view formula_;
    std::string extended_;  // the formula and more, when it does not spell out every name
    std::vector<VariableNames::Entry> entries_;
    std::vector<std::uint32_t> slots_;
    std::array<std::uint32_t, 128> afterLetters_{};  // of names of one letter, 1 + their index
    std::string letters_;                            // which of these are not 0
};

}  // namespace varo::engine
