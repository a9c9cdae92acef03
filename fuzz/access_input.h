#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace varo::fuzz {

/// What is done with a file.
enum class AccessTask : std::uint8_t { Table, Tables, Journal, Write };
inline constexpr std::size_t kAccessTasks = 4;

/// Where an edit of an Access file goes.
enum class AccessPlace : std::uint8_t {
    TablePage,    ///< a page of the chosen table, counted among these
    CatalogPage,  ///< a page of the catalog, counted among these
    AnyPage,
    Journal,  ///< page: further 4096 bytes of the journal
    Cut,      ///< the file ends there
};
inline constexpr std::size_t kAccessPlaces = 5;

struct AccessEdit {
    AccessPlace place = AccessPlace::TablePage;
    std::uint16_t page = 0;
    std::uint16_t offset = 0;  ///< in the page
    std::string bytes;
};

/// A base file, what is done with it and how it is edited before, in one run of bytes: four for
/// what is chosen, then for each edit one for its place, two each for page and offset, the lower
/// one first, one for the length and that many.
struct AccessInput {
    std::uint8_t base = 0;
    AccessTask task = AccessTask::Table;
    std::uint8_t table = 0;
    std::uint8_t detail = 0;  ///< an index, or the state of the file beside a journal
    std::vector<AccessEdit> edits;

    static constexpr std::size_t kHead = 4;
    static constexpr std::size_t kEditHead = 6;
    static constexpr std::size_t kLongestEdit = 64;

    explicit AccessInput(std::string_view bytes = {}) {
        const auto at = [&](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
        const auto pair = [&](std::size_t i) {
            return static_cast<std::uint16_t>(at(i) | at(i + 1) << 8);
        };
        if (bytes.size() < kHead) {
            return;
        }
        base = at(0);
        task = static_cast<AccessTask>(at(1) % kAccessTasks);
        table = at(2);
        detail = at(3);
        bytes.remove_prefix(kHead);
        while (bytes.size() > kEditHead) {
            const std::size_t length =
                std::min({std::size_t{at(5)}, kLongestEdit, bytes.size() - kEditHead});
            edits.push_back({static_cast<AccessPlace>(at(0) % kAccessPlaces), pair(1), pair(3),
                             std::string(bytes.substr(kEditHead, length))});
            bytes.remove_prefix(kEditHead + length);
        }
    }

    std::string bytes() const {
        std::string all{static_cast<char>(base), static_cast<char>(task), static_cast<char>(table),
                        static_cast<char>(detail)};
        for (const AccessEdit& edit : edits) {
            all += {static_cast<char>(edit.place),       static_cast<char>(edit.page),
                    static_cast<char>(edit.page >> 8),   static_cast<char>(edit.offset),
                    static_cast<char>(edit.offset >> 8), static_cast<char>(edit.bytes.size())};
            all += edit.bytes;
        }
        return all;
    }
};

}  // namespace varo::fuzz
