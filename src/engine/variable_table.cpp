#include "engine/variable_table.h"

#include "engine/unicode.h"

#include <algorithm>
#include <cstddef>
#include <random>

namespace varo::engine {
namespace {

constexpr std::size_t kFewestSlots = 16;

/// Another start in every process, so that nobody can choose names that all fall on one slot.
std::uint64_t hashSeed() {
    static const std::uint64_t seed = [] {
        std::random_device device;
        return std::uint64_t{device()} << 32 | device();
    }();
    return seed;
}

std::uint32_t hashOf(std::string_view folded) {
    std::uint64_t hash = hashSeed();
    for (const char character : folded) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 29;
    }
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

/// The slot that holds the name, or the free one where it belongs. There must be a free slot.
std::size_t slotOf(const VariableNames& names, std::string_view folded, std::uint32_t hash) {
    const std::size_t mask = names.slots.size() - 1;
    for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
        const std::uint32_t index = names.slots[slot];
        if (index == VariableNames::kNone) {
            return slot;
        }
        const VariableNames::Entry& entry = names.entries[index];
        if (entry.hash == hash &&
            folded == names.characters.substr(entry.begin + entry.nameSize, entry.foldedSize)) {
            return slot;
        }
    }
}

}  // namespace

void appendFolded(std::string& folded, std::string_view name) {
    const char* const end = name.data() + name.size();
    for (const char* at = name.data(); at != end;) {
        const Decoded next = decode(at, end);
        appendCharacter(folded, foldCase(asciiForm(next.character)));
        at += next.bytes;
    }
}

std::uint32_t VariableNames::find(std::string_view folded) const {
    return entries.empty() ? kNone : slots[slotOf(*this, folded, hashOf(folded))];
}

std::uint32_t VariableTable::intern(std::string_view name, std::string_view folded) {
    if (slots_.size() < 2 * (entries_.size() + 1)) {
        grow();
    }
    const std::uint32_t hash = hashOf(folded);
    std::uint32_t& index = slots_[slotOf(names(), folded, hash)];
    if (index == VariableNames::kNone) {
        index = size();
        entries_.push_back({hash, static_cast<std::uint32_t>(characters_.size()),
                            static_cast<std::uint32_t>(name.size()),
                            static_cast<std::uint32_t>(folded.size())});
        characters_ += name;
        characters_ += folded;
    }
    return index;
}

void VariableTable::clear() {
    entries_.clear();
    characters_.clear();
    slots_.resize(std::min(slots_.size(), kFewestSlots));
    std::fill(slots_.begin(), slots_.end(), VariableNames::kNone);
}

void VariableTable::grow() {
    slots_.assign(std::max(kFewestSlots, 2 * slots_.size()), VariableNames::kNone);
    for (std::uint32_t index = 0; index < size(); ++index) {
        const VariableNames::Entry& entry = entries_[index];
        const std::string_view folded =
            std::string_view(characters_).substr(entry.begin + entry.nameSize, entry.foldedSize);
        slots_[slotOf(names(), folded, entry.hash)] = index;
    }
}

}  // namespace varo::engine
