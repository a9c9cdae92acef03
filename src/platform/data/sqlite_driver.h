#pragma once

#include "platform/data/driver.h"

namespace varo::data {

/// Whether the file at `path` begins as SQLite's files do. Leaves alone what lies beside it, such
/// as the journal of another database. Throws Error when the file cannot be read.
bool isSqliteFile(const QString& path);

/// Files in SQLite's own format. They have a rollback journal, so that each is exactly one file
/// while no transaction is open; one that was given a write-ahead log elsewhere loses it.
class SqliteDriver final : public Driver {
  public:
    std::unique_ptr<DatabaseFile> open(const QString& path, Access access) const override;
};

}  // namespace varo::data
