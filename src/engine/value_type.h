#pragma once

#include <cstdint>

namespace varo::engine {

/// What a variable, an operand or a result is.
enum class Type : std::uint8_t { Number = 1, Text = 2 };

}  // namespace varo::engine
