#pragma once

#include "platform/data/access.h"
#include "platform/data/argument.h"
#include "platform/data/blob_field.h"
#include "platform/data/error.h"
#include "platform/data/recordset.h"
#include "platform/data/table_structure.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <set>

namespace varo::data {

/// A connection to one database file. The file's format is told by its content; a file that no
/// driver reads does not open. Not thread-safe. Everything that fails throws Error.
class Connection {
  public:
    Connection();
    ~Connection();
    Connection(Connection&&) noexcept;
    Connection& operator=(Connection&&) noexcept;

    /// Closes what is open and opens the existing file at `path`; Access::Write reads only where
    /// the file cannot be written. The format is told by the file's first bytes before anything is
    /// changed.
    ///
    /// With Access::Write, a database that a killed program left half-written is taken back to its
    /// last commit, with the journal beside it; a journal beside a file of another format is not
    /// applied. A database with a write-ahead log gets a rollback journal instead, after what its
    /// log holds has been written into it. With Access::Read nothing is created or changed beside
    /// or in the file: where it needs one of the two, a copy in a folder of temporary files is
    /// read, which close() removes. With Access::Glance, one that would need a large copy does not
    /// open, with an Error of the cause NotCopied, once its header and the kinds of what lies
    /// beside it have been looked at.
    ///
    /// Nothing that the file or what lies beside it says is run, no other file that they name is
    /// touched, and locks that this process holds on the file through another connection stay.
    /// Throws Error (the connection is then closed) when the file is missing, is in no format that
    /// a driver reads, is damaged or locked so that its structure cannot be read, when what lies
    /// beside it is no journal of it, or when it needs one of the two where nothing can be written.
    void open(const QString& path, Access access = Access::Write);

    /// Closes the file; record sets and fields taken from this connection become closed.
    void close() noexcept;

    bool isOpen() const noexcept;

    /// Path of the open file as given to open(), "" when closed.
    QString path() const;

    /// How long a lock of another program is waited for, in milliseconds; kLockTimeout at first.
    void setLockWait(int milliseconds);

    /// How many bytes of the file are kept in memory for statements to come; some megabytes at
    /// first.
    void setCacheLimit(qint64 bytes);

    /// While a statement of the open file runs, `isWanted` is asked every few milliseconds at
    /// least; once it returns false the statement fails with an Error that isInterrupted(). It must
    /// not use this connection. An empty function is not asked; close() forgets it.
    void setInterrupt(std::function<bool()> isWanted);

    // A statement that takes more steps than a file of that size can need is ended with an Error,
    // and one on a file that has been replaced, deleted, overwritten, cut short or given a
    // write-ahead log fails with an Error that isReplaced(); so does everything until open(). Both
    // hold for all that follows.

    /// Whether the open file is still the one at path(), as it was opened; always so for a copy of
    /// it.
    bool isInPlace() const;

    /// A number that stays the same while nobody but this connection changes the file. Throws Error
    /// when the file cannot be read.
    qint64 changesOfOthers();

    /// `tell` is called once when a statement is the first to fail because the file is not in its
    /// place any more, before the Error is thrown. It must not use this connection. close() forgets
    /// it.
    void setReplacedNotice(std::function<void()> tell);

    /// Runs a statement that changes data; returns the number of rows changed.
    qint64 execute(const QString& statement, const Arguments& arguments = {});

    /// Runs a query and returns its record set, positioned on the first row. To count all rows of a
    /// table use count(1): SQLite evaluates count(*) in one step, which nothing ends. A statement
    /// may call exact_text(X), the text of a value as Recordset::text() gives it, NULL for a binary
    /// value.
    Recordset query(const QString& statement, const Arguments& arguments = {});

    /// Identifier that the database assigned to the last inserted row. Throws Error when it is
    /// beyond 32 bits.
    qint32 lastInsertedId() const;

    /// What a statement calls the number of bytes in the long-binary field `column` of a row of
    /// `table`, which reads none of them; it is NULL or 0 where the field is empty.
    QString lengthOf(const QString& table, const QString& column) const;

    /// The long-binary field `column` of the row of `table` whose identifier is `id`. Throws Error
    /// when there is no such row.
    BlobField field(const QString& table, const QString& column, qint32 id);

    /// How the file keeps the table with this name, letter case ignored; nothing when there is
    /// none.
    std::optional<TableStructure> structure(const QString& table);

    /// Names of the tables, in the order in which they were made; views and what the database keeps
    /// for itself are not among them.
    QStringList tables();

    /// Goes through the whole file and returns what is wrong with it, a line each and not more than
    /// a hundred or so; empty when it is sound. In a file that has a table of which not
    /// TableStructure::runsNothing, such tables and the pages that no table uses are left out.
    QStringList damages();

  private:
    friend class Transaction;
    friend class ReadSnapshot;
    std::shared_ptr<struct ConnectionState> state_;
};

/// Groups the writes made on a connection until commit(); destroying it without commit() undoes
/// them. Transactions may be nested: the inner one can be undone alone, and what it commits becomes
/// final with the outermost one.
class Transaction {
  public:
    explicit Transaction(Connection& connection);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Makes the writes final. Throws Error when that fails; they are then undone. The outermost
    /// transaction fails while the replacement of a field is incomplete.
    void commit();

  private:
    void undo() noexcept;

    std::shared_ptr<struct ConnectionState> state_;
    std::set<quint64> incompleteBefore_;
    int depth_ = 0;
    bool open_ = false;
};

/// While it lives, everything read through the connection is one state of the file, whatever other
/// programs do, and writing through it fails.
class ReadSnapshot {
  public:
    /// Throws Error when the file is locked, or a transaction or snapshot of the connection is
    /// open.
    explicit ReadSnapshot(Connection& connection);
    ~ReadSnapshot();
    ReadSnapshot(const ReadSnapshot&) = delete;
    ReadSnapshot& operator=(const ReadSnapshot&) = delete;

  private:
    std::shared_ptr<struct ConnectionState> state_;
};

}  // namespace varo::data
