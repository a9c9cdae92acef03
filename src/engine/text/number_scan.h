#pragma once

namespace varo::engine {

/// Reads the unsigned number that [first, last) begins with: digits with at most one decimal point,
/// then an exponent if it is complete. Returns where it ends, or `first` when there is none, which
/// leaves `value` alone. A number too large becomes infinite, one too small 0.
const char* scanNumber(const char* first, const char* last, double& value);

}  // namespace varo::engine
