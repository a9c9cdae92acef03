#pragma once

#include <QString>

namespace varo::data {

/// Whether another program or connection keeps the database at `path` from being read just now.
/// Waits for nothing, and reads and changes nothing. False also for what is no database.
bool isLocked(const QString& path);

}  // namespace varo::data
