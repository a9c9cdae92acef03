#pragma once

#include "library/text_error.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace varo {

/// What a TOML text has at a place that its parser must not be given.
struct TomlRefusal {
    Position at;
    QString message;
};

struct TomlScan {
    std::optional<TomlRefusal> refusal;
    std::string text;               ///< for the parser, when nothing is refused
    std::vector<Position> escapes;  ///< where `text` has an escape for a character of the text

    /// The place in the text that was looked through of the place `at` in `text`.
    Position placeInText(Position at) const;
};

/// Looks through a TOML text in UTF-8 for what would harm its parser. Refused are keys of so many
/// parts or values nested so deep that the parser's stack overflows, and characters beyond ASCII
/// outside of quotes and comments or behind a backslash, which no TOML text has there; nothing is
/// when there is none of these up to where the text can be TOML. Whether it is TOML is for the
/// parser to tell. The text for the parser is the same but for characters beyond ASCII that begin a
/// line joined to the one before by a backslash, which are escapes.
TomlScan scanToml(std::string_view text);

/// Most parts of a dotted key or of the name of a table, and most brackets around a value.
inline constexpr int kMaxTomlDepth = 16;

}  // namespace varo
