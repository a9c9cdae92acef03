#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace varo::fuzz {

/// What lies beside the library.
enum class SideFile : std::uint8_t { None, Journal, Log };

/// A library file, and perhaps a journal or a write-ahead log of it, in one run of bytes: a byte
/// for what lies beside it, four for the length of that, the lowest first, the library, and it.
struct LibraryInput {
    SideFile side = SideFile::None;
    std::string library;
    std::string sideContent;

    static constexpr std::size_t kHead = 5;

    explicit LibraryInput(std::string_view bytes = {}) {
        if (bytes.size() < kHead) {
            return;
        }
        side = static_cast<SideFile>(static_cast<std::uint8_t>(bytes[0]) % 3);
        std::size_t length = 0;
        for (int i = 0; i < 4; ++i) {
            length |= std::size_t{static_cast<std::uint8_t>(bytes[1 + i])} << (8 * i);
        }
        bytes.remove_prefix(kHead);
        length = side == SideFile::None ? 0 : std::min(length, bytes.size());
        library = bytes.substr(0, bytes.size() - length);
        sideContent = bytes.substr(bytes.size() - length);
    }

    std::string bytes() const {
        std::string all(1, static_cast<char>(side));
        for (int i = 0; i < 4; ++i) {
            all += static_cast<char>(sideContent.size() >> (8 * i));
        }
        return all + library + sideContent;
    }
};

}  // namespace varo::fuzz
