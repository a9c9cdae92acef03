#pragma once

#include "library/text_error.h"

#include <optional>
#include <string_view>

namespace varo {

/// What a TOML text has at a place that its parser must not be given.
struct TomlRefusal {
    Position at;
    QString message;
};

/// Looks through a TOML text in UTF-8 for what would harm its parser: keys of so many parts or
/// values nested so deep that the parser's stack overflows, and characters beyond ASCII outside of
/// quotes and comments, which no TOML text has there. Nothing when there is none of these up to
/// where the text can be TOML; whether it is TOML is for the parser to tell.
std::optional<TomlRefusal> refusedInToml(std::string_view text);

/// Most parts of a dotted key or of the name of a table, and most brackets around a value.
inline constexpr int kMaxTomlDepth = 16;

}  // namespace varo
