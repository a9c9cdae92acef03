#include "engine/language/variable_table.h"

#include "engine/text/unicode.h"

#include <bit>
#include <cstddef>
#include <functional>
#include <random>

namespace varo::engine {
namespace {

/// Different in every process, so that no formula can be written whose names all hash to one slot.
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
        if (names.entries[index].hash == hash && names.foldedName(index) == folded) {
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
    if (!slots.empty()) {
        return slots[slotOf(*this, folded, hashOf(folded))];
    }
    for (std::uint32_t index = 0; index < entries.size(); ++index) {
        const Entry& entry = entries[index];
        if (entry.foldedSize == folded.size() && characters[entry.foldedBegin] == folded[0] &&
            foldedName(index) == folded) {
            return index;
        }
    }
    return kNone;
}

void VariableTable::start(std::string_view formula) {
    for (const char letter : letters_) {
        afterLetters_[static_cast<unsigned char>(letter)] = 0;
    }
    letters_.clear();
    formula_ = formula;
    extended_.clear();
    entries_.clear();
    slots_.clear();
}

std::uint32_t VariableTable::intern(std::string_view name, std::string_view folded) {
    if (folded.size() == 1) {
        return internLetter(name, folded);
    }
    const std::uint32_t known = names().find(folded);
    return known != VariableNames::kNone ? known : add(name, folded);
}

/// Where `characters` are among those of the names; they are added unless the formula has them.
std::uint32_t VariableTable::place(std::string_view characters) {
    const std::less_equal<> isUpTo;
    if (isUpTo(formula_.data(), characters.data()) &&
        isUpTo(characters.data() + characters.size(), formula_.data() + formula_.size())) {
        return static_cast<std::uint32_t>(characters.data() - formula_.data());
    }
    if (extended_.empty()) {
        extended_ = formula_;
    }
    const auto begin = static_cast<std::uint32_t>(extended_.size());
    extended_ += characters;
    return begin;
}

std::uint32_t VariableTable::add(std::string_view name, std::string_view folded) {
    const std::uint32_t index = size();
    VariableNames::Entry entry{};
    entry.begin = place(name);
    entry.nameSize = static_cast<std::uint32_t>(name.size());
    entry.foldedBegin = folded.data() == name.data() ? entry.begin : place(folded);
    entry.foldedSize = static_cast<std::uint32_t>(folded.size());
    entry.hash = slots_.empty() ? 0 : hashOf(folded);
    entries_.push_back(entry);
    if (slots_.empty() ? entries_.size() > VariableNames::kMostWithoutSlots
                       : slots_.size() < 2 * entries_.size()) {
        makeSlots();
    } else if (!slots_.empty()) {
        slots_[slotOf(names(), folded, entry.hash)] = index;
    }
    return index;
}

/// Makes a hash table with room for as many names again.
void VariableTable::makeSlots() {
    const bool hashesMissing = slots_.empty();
    slots_.assign(4 * std::bit_ceil(entries_.size()), VariableNames::kNone);
    for (std::uint32_t index = 0; index < size(); ++index) {
        const std::string_view folded = names().foldedName(index);
        if (hashesMissing) {
            entries_[index].hash = hashOf(folded);
        }
        slots_[slotOf(names(), folded, entries_[index].hash)] = index;
    }
}

}  // namespace varo::engine
