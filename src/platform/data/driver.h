#pragma once

#include "platform/data/access.h"
#include "platform/data/argument.h"
#include "platform/data/statement_watch.h"
#include "platform/data/table_structure.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <span>
#include <sqlite3.h>
#include <vector>

namespace varo::data {

class DatabaseFile;

/// An object that uses the handle of an open file and is told to release it before it closes.
class HandleUser {
  public:
    explicit HandleUser(DatabaseFile& file);
    HandleUser(const HandleUser&) = delete;
    HandleUser& operator=(const HandleUser&) = delete;

    /// Null once the file has been closed.
    DatabaseFile* file() const noexcept { return file_; }

  protected:
    virtual ~HandleUser();

    /// Gives back everything that was taken from the handle.
    virtual void release() noexcept = 0;

    /// Gives back what does not outlive a transaction that is being undone.
    virtual void releaseUndone() noexcept {}

  private:
    friend class DatabaseFile;
    DatabaseFile* file_;
};

/// The bytes of one long-binary field. Everything that fails throws Error; so does everything after
/// the file has been closed.
class LongBinary {
  public:
    virtual ~LongBinary() = default;
    virtual qint64 size() = 0;
    virtual void read(qint64 offset, std::span<char> chunk) = 0;

    /// Replaces the content by `total` bytes of any value, which write() then overwrites.
    virtual void replace(qint64 total) = 0;
    virtual void write(qint64 offset, std::span<const char> chunk) = 0;
};

/// An open file, seen through SQLite: whatever the file's format, its tables are reached with SQL
/// on handle(), if need be as virtual tables of a database in memory. Long-binary fields have a way
/// of their own, since not every format offers them there.
///
/// In every table rowid is a number that a row keeps for as long as it is there, and text compares
/// without regard to ASCII letter case. What else a table keeps, structure() tells. Rows are
/// changed with execute() and LongBinary alone.
class DatabaseFile {
  public:
    DatabaseFile() = default;
    DatabaseFile(const DatabaseFile&) = delete;
    DatabaseFile& operator=(const DatabaseFile&) = delete;
    virtual ~DatabaseFile() = default;

    virtual sqlite3* handle() const noexcept = 0;

    /// How long a lock of another program is waited for, in milliseconds, and how many bytes of the
    /// file are kept in memory for statements to come.
    virtual void setLockWait(int milliseconds) = 0;
    virtual void setCacheLimit(qint64 bytes) = 0;

    /// Ends the statements on handle() that do not end by themselves.
    virtual StatementWatch& watch() noexcept = 0;

    /// Throws Error that isReplaced() when the open file is not the one at its path any more. To be
    /// called before a statement that is in no transaction.
    virtual void requireInPlace() = 0;

    /// A number that stays the same while nobody else changes the file. Throws Error when the file
    /// cannot be read.
    virtual qint64 changesOfOthers() = 0;

    // A transaction has levels 1, 2, ..., each of which can be undone with those above it. The
    // caller begins them in ascending order and ends the last one first.

    /// Whether level 1 or a reading is open. A failure, such as a full disk, may have undone and
    /// ended the whole transaction.
    virtual bool isInTransaction() const noexcept = 0;

    /// Begins a level. Level 1 keeps other programs from writing. Throws Error when one is, or the
    /// file cannot be written, or a reading is open.
    virtual void begin(int level) = 0;

    /// Ends a level and keeps its changes, with level 1 on the disk. Throws Error when that fails;
    /// the level is then to be undone.
    virtual void commit(int level) = 0;

    /// Undoes and ends a level; nothing when the transaction has ended.
    virtual void undo(int level) noexcept = 0;

    /// Begins a reading: what is read until endReading() is one state of the file, and execute()
    /// fails. Throws Error when the file is locked, or a transaction or reading is open.
    virtual void beginReading() = 0;
    virtual void endReading() noexcept = 0;

    /// Runs a statement that changes rows, which outside a transaction is one; returns the number
    /// of rows changed. Throws Error when it fails; it has then changed nothing.
    virtual qint64 execute(const QString& statement, const Arguments& arguments) = 0;

    /// The number that the file has given to the row inserted last; 0 when it has given none.
    virtual qint64 lastInsertedId() const = 0;

    /// What a statement calls the number of bytes in a long-binary field, without reading them;
    /// NULL or 0 where it is empty.
    virtual QString lengthOf(const QString& table, const QString& column) const = 0;

    /// The field `column` of the row of `table` whose column ID is `id`; throws Error when there is
    /// no such row.
    virtual std::shared_ptr<LongBinary> field(const QString& table, const QString& column,
                                              qint32 id) = 0;

    /// How the file keeps the table with this name, letter case ignored; nothing when there is
    /// none. Reads no rows. Throws Error when that cannot be told.
    virtual std::optional<TableStructure> structure(const QString& table) = 0;

    /// Names of the tables, in the order in which they were made; views and what the database keeps
    /// for itself are not among them. Reads no rows. Throws Error when that cannot be told.
    virtual QStringList tables() = 0;

    /// What the driver's own check of the whole file finds wrong, a line each; what ends the check
    /// early is one. Throws Error when the file is locked or the check is no longer wanted.
    virtual QStringList damages() = 0;

    /// Makes every user release the handle; to be called before destruction.
    void releaseUsers() noexcept;

    /// Makes every user give back what does not outlive a transaction that is being undone.
    void releaseUndone() noexcept;

  private:
    friend class HandleUser;
    std::vector<HandleUser*> users_;
};

/// Opens the files of one format.
class Driver {
  public:
    virtual ~Driver() = default;

    /// Opens the existing file at `path` as Connection::open() says and reads its structure; null
    /// when its content, never its name, says that the file is in another format or is empty. The
    /// first bytes of the file are read with fileStart() before anything else is done: a file of
    /// another format is left as it is, whatever journal lies beside it. Throws Error when the file
    /// cannot be opened.
    virtual std::unique_ptr<DatabaseFile> open(const QString& path, Access access) const = 0;
};

/// Opens the file at `path` with the driver for its format. Throws Error when the file is missing,
/// in no format that a driver reads, or cannot be opened.
///
/// The file may be one that this process has open already: every lock on it stays. SQLite's
/// driver is asked first and another one only for files that are not SQLite's: closing any handle
/// of a file takes from this process the locks that SQLite holds on it, so that nothing but SQLite
/// and fileStart() may open an SQLite file.
std::unique_ptr<DatabaseFile> openDatabaseFile(const QString& path, Access access);

}  // namespace varo::data
