#pragma once

#include <QString>

namespace varo {

/// Throws TextError unless a new library may take the place `path`: nothing is there, an empty
/// regular file, or a library by its content, and of its side files (path-journal, path-wal,
/// path-shm) only those that a database leaves beside a library. With `force` any regular file,
/// and any regular side file, may be replaced. What is no regular file, or a link to such, is never
/// replaced. Changes nothing.
void requireReplaceable(const QString& path, bool force);

/// The same for a file of data tables, where nothing may be at `path` nor beside it.
void requireFree(const QString& path);

/// Removes what lies under the names of side files beside the library at `path` when it does not
/// belong to that. To be called after requireReplaceable() with `force`.
void removeForeignSideFiles(const QString& path);

}  // namespace varo
