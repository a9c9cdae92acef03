#pragma once

#include <QString>

namespace varo::data {

/// Whether Connection::open() would have to wait for a program that has the database at `path`
/// locked now. False also for what does not open. Waits for nobody and changes nothing.
bool isLocked(const QString& path);

}  // namespace varo::data
