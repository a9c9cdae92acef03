#pragma once

#include "platform/data/error.h"

#include <QtGlobal>

#include <functional>
#include <sqlite3.h>

namespace varo::data {

/// Ends statements of one open file that are no longer wanted or do not end: pages that lead to one
/// another in circles hold rows without end, and rows that share one long value take it anew each.
/// What a statement may take is counted in instructions of SQLite's virtual machine and in pages
/// that it asks for, so that the same statement on the same file always ends alike.
class StatementWatch {
  public:
    /// Watches the statements on `database`, which must not outlive this; its pages have so many
    /// bytes.
    StatementWatch(sqlite3* database, qint64 pageSize);
    Q_DISABLE_COPY_MOVE(StatementWatch)

    /// While a statement runs, `isWanted` is asked every few milliseconds at least; it ends once
    /// that returns false. An empty function is not asked.
    void setInterrupt(std::function<bool()> isWanted) { isWanted_ = std::move(isWanted); }

    /// Lets a statement take what one on a file of so many bytes can need, temporary files
    /// included.
    void setFileSize(qint64 bytes);

    /// Reads the schema of the database, without the statistics in it: tables that the file brings
    /// and that SQLite reads by itself, whatever they say that is to be computed. SQLite's result;
    /// SQLITE_AUTH when there is such a table with a computed column, SQLITE_OK else when the
    /// schema has been read. It stays read; nothing else must have read it before.
    int readSchema();

    /// Whether the last question has been answered with no.
    bool isUnwanted() const noexcept { return isUnwanted_; }

    /// A new statement begins.
    void restart() noexcept;

    /// How many statements have begun.
    quint64 statements() const noexcept { return statements_; }

    /// A statement asks for a page that SQLite does not know of. Throws Error when the statement is
    /// to end; so does the following, which does not count the page.
    void takePage();
    void requireWanted();

    /// Pages that statements have asked for since restart().
    qint64 pagesTaken() const;

    /// To be called with a statement that has come to its row number `row`, and that has asked for
    /// so many pages since another one began: throws Error when the rows so far are more than a
    /// statement can have, or have taken too much.
    void requireEnding(sqlite3_stmt* statement, qint64 row, qint64 pages) const;

    /// Runs `operation`. An Error of a statement that has taken too much says so.
    template <class Operation>
    decltype(auto) during(Operation operation) const {
        try {
            return operation();
        } catch (const Error& error) {
            if (error.isInterrupted() && !isUnwanted_) {
                throwEndless();
            }
            throw;
        }
    }

  private:
    void ask(int instructionsBetween);
    static int isToEnd(void* watch);
    bool isToEnd();
    bool readsStatistics() const;
    bool areTooMany(qint64 pages, qint64 instructions) const;
    qint64 presentFileSize() const;
    [[noreturn]] static void throwEndless();

    sqlite3* database_;
    qint64 pageSize_;
    std::function<bool()> isWanted_;
    bool isUnwanted_ = false;
    bool readsSchema_ = false;
    int between_ = 0;      ///< instructions between two questions
    qint64 ownPages_ = 0;  ///< that takePage() was told of since restart()
    qint64 asked_ = 0;     ///< calls of requireWanted()
    qint64 taken_ = 0;     ///< instructions since restart(), of statements that take many
    quint64 statements_ = 0;
    qint64 nextQuestion_ = 0;
    qint64 fileSize_ = 0;
    qint64 most_ = 0;
    qint64 mostRows_ = 0;
};

}  // namespace varo::data
