#pragma once

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
        std::uint32_t hash;
        std::uint32_t begin;  ///< of the name in `characters`; its case-folded form follows it
        std::uint32_t nameSize;
        std::uint32_t foldedSize;
    };

    std::span<const Entry> entries;
    std::span<const std::uint32_t>
        slots;  ///< a hash table of indices and kNone, a power of two in size
    std::string_view characters;

    std::string_view name(std::uint32_t index) const {
        return characters.substr(entries[index].begin, entries[index].nameSize);
    }

    /// The index of the variable with that case-folded name, or kNone.
    std::uint32_t find(std::string_view folded) const;
};

/// The variables of a formula while it is read, each with its index in order of first occurrence.
class VariableTable {
  public:
    /// The index of the variable with that case-folded name; a new one, spelled `name`, if there
    /// was none.
    std::uint32_t intern(std::string_view name, std::string_view folded);

    /// Forgets the variables, but keeps the memory.
    void clear();

    std::uint32_t size() const { return static_cast<std::uint32_t>(entries_.size()); }

    /// Valid until the table changes.
    VariableNames names() const { return {entries_, slots_, characters_}; }

  private:
    void grow();

    std::vector<VariableNames::Entry> entries_;
    std::vector<std::uint32_t> slots_;
    std::string characters_;
};

}  // namespace varo::engine
