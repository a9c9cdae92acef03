#pragma once

#include "platform/data/access.h"
#include "platform/data/side_files.h"
#include "platform/data/statement_watch.h"
#include "platform/data/temporary_files.h"

#include <QString>

#include <memory>
#include <sqlite3.h>

namespace varo::data {

struct HandleDeleter {
    void operator()(sqlite3* handle) const noexcept { sqlite3_close_v2(handle); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, HandleDeleter>;

/// Opens the database at `path` and reads nothing of it; for reading only where it cannot be
/// written. Throws Error. A layer for its temporary files, if any, must outlive it.
DatabaseHandle openHandle(const QString& path, Access access,
                          const TemporaryFileLayer* layer = nullptr);

/// While it lives, other programs, and other connections of this one, are kept from writing to a
/// database, or from using it at all.
class FileLock {
  public:
    enum class Kind { WithReaders, Alone };

    /// Locks the database that `database` has open and has not read yet. Throws Error when it is in
    /// use, one that isLocked().
    FileLock(sqlite3* database, const QString& path, Kind kind);
    ~FileLock();
    Q_DISABLE_COPY_MOVE(FileLock)

  private:
    sqlite3_file* file_ = nullptr;
};

/// A connection of SQLite to a database that may come from anywhere.
struct SafeHandle {
    std::unique_ptr<TemporaryFileLayer> layer;
    std::unique_ptr<sqlite3_io_methods> methods;
    std::unique_ptr<StatementWatch> watch;
    DatabaseHandle handle;  ///< behind the others, which outlive it
};

/// Opens the SQLite database at `path`, the one with this header, so that it can do no harm: what
/// lies beside it has been looked at (see requireSideFilesOf()), nothing that its schema says runs,
/// no value is longer than the file has room for, and it has a rollback journal, or now gets one.
/// Its schema is to be read with StatementWatch::readSchema(), before anything else. With
/// Access::Read nothing is changed, and a database with a write-ahead log is refused. Throws Error.
SafeHandle openSafely(const QString& path, const DatabaseHeader& header, Access access);

/// Throws Error unless StatementWatch::readSchema() has just succeeded with this result.
void requireRead(sqlite3* database, int result);

/// Lets statements on `database` read values that a file of so many bytes can hold.
void allowValuesOfFile(sqlite3* database, qint64 bytes);

}  // namespace varo::data
