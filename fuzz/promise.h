#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace varo::fuzz {

/// Ends the process, which is a finding, unless the code under test keeps `promise`.
inline void require(bool holds, const char* promise) {
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", promise);
        std::abort();
    }
}

/// What libFuzzer hands over.
inline std::string_view asText(const std::uint8_t* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace varo::fuzz
