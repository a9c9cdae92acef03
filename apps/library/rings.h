#pragma once

#include <QtGlobal>

#include <cstddef>
#include <utility>
#include <vector>

namespace varo {

/// Something and what it is in, by their identifiers.
using Inside = std::pair<qint32, qint32>;

/// Identifiers that are inside themselves.
struct Ring {
    /// Each is in the one before, the first in the last; the first kMostMembers of them.
    std::vector<qint32> members;
    std::size_t size = 0;

    static constexpr std::size_t kMostMembers = 20;
};

/// The rings among `pairs`, at most `most` of them; each pair is in as many as are needed to name
/// it. An identifier may be in several others. Takes a time of n log n.
std::vector<Ring> ringsAmong(std::vector<Inside> pairs, std::size_t most);

}  // namespace varo
