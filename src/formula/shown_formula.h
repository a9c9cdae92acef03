#pragma once

#include <QtGlobal>

#include <optional>

namespace varo {

/// Identifier of the formula of the current library that the panel shows; none while it shows none.
using ShownFormula = std::optional<qint32>;

}  // namespace varo
