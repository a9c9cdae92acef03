#pragma once

#include "platform/data/driver.h"

namespace varo::data {

/// Longest wait for a lock that another program holds, in milliseconds.
inline constexpr int kLockTimeout = 2000;

/// Whether the file at `path` begins as SQLite's files do. Leaves alone what lies beside it, such
/// as the journal of another database. Throws Error when the file cannot be read.
bool isSqliteFile(const QString& path);

/// Files in SQLite's own format. A file keeps the journal mode that it has: libraries made here
/// have a rollback journal, so that each is exactly one file while no transaction is open; one that
/// was given a write-ahead log elsewhere is read and written with it.
class SqliteDriver final : public Driver {
  public:
    std::unique_ptr<DatabaseFile> open(const QString& path) const override;
};

}  // namespace varo::data
