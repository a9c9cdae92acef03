#pragma once

#include <QString>

#include <cstddef>
#include <variant>
#include <vector>

namespace varo::data {

/// A value bound to a `?` of a statement. A text with U+0000 or half a surrogate pair cannot be
/// stored as it stands and makes the statement fail.
using Argument = std::variant<std::nullptr_t, qint32, qint64, QString>;
using Arguments = std::vector<Argument>;

}  // namespace varo::data
