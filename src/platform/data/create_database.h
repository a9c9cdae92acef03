#pragma once

#include "platform/data/access/new_table.h"

#include <QString>

#include <functional>

namespace varo::data {

/// Makes a new database file at `path` with what the statements of `script` create. The file
/// appears complete or not at all; a journal or write-ahead log that a deleted database left there
/// is removed. Throws Error when it cannot be written, a statement fails, something is at `path`
/// already, or what lies in the place of its journals is none.
void createDatabase(const QString& path, const QString& script);

/// Makes a new Access file of version Jet4 or Ace12 at `path` with these tables, after `fill` has
/// been called with the path of the unfinished file. The file appears complete or not at all.
/// Throws Error when it cannot be written or something is at `path` already, and what `fill`
/// throws.
void createAccessDatabase(const QString& path, access::Version version,
                          const QList<access::NewTable>& tables,
                          const std::function<void(const QString& unfinished)>& fill);

/// Gives the closed database file `unfinished` its final place at `path`, in the same file system.
/// An SQLite database that is there is first recovered, taken out of write-ahead logging and
/// locked, and its journals are removed, so that what they hold cannot get into the new one; the
/// file at `path` is then replaced whole, whatever it holds. Throws Error when that database is
/// locked or write-protected, what lies in the place of its journals is not of it, `path` is no
/// regular file, or a step fails; the file at `path` then keeps its content, and `unfinished` is
/// where it was.
/// Another program that has the old database open without a lock goes on reading it, but can no
/// longer write.
void replaceDatabase(const QString& unfinished, const QString& path);

}  // namespace varo::data
