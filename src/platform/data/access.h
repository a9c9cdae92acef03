#pragma once

namespace varo::data {

/// What a file is opened for.
enum class Access {
    Write,
    Read,
    Glance  ///< like Read, but nothing larger than kMostGlanced is copied to be read
};

/// Bytes of a database and what lies beside it that are copied at once.
inline constexpr long long kMostGlanced = 16 << 20;

/// How long a lock that another program holds is waited for, in milliseconds, unless a connection
/// is told otherwise.
inline constexpr int kLockTimeout = 2000;

}  // namespace varo::data
