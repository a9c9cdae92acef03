#pragma once

#include <QString>

namespace varo::data {

/// Makes a new database file at `path` with what the statements of `script` create. The file
/// appears complete or not at all. Throws Error when it cannot be written, a statement fails or
/// something is at `path` already.
void createDatabase(const QString& path, const QString& script);

}  // namespace varo::data
