#pragma once

#include <QtGlobal>

#include <set>

namespace varo::data {

/// The replacements of long-binary fields that a connection has begun. Transactions bring
/// `incomplete` back to what it was when they are undone.
struct Replacements {
    std::set<quint64> incomplete;  ///< the numbers of those that still lack bytes
    quint64 last = 0;              ///< the number of the one begun last
};

}  // namespace varo::data
