#pragma once

namespace varo::data {

/// What a file is opened for.
enum class Access { Write, Read };

/// How long a lock that another program holds is waited for, in milliseconds, unless a connection
/// is told otherwise.
inline constexpr int kLockTimeout = 2000;

}  // namespace varo::data
