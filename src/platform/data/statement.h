#pragma once

#include "platform/data/argument.h"
#include "platform/data/error.h"
#include "platform/data/identifiers.h"

#include <QHash>
#include <QString>

#include <limits>
#include <memory>
#include <sqlite3.h>
#include <unordered_map>

namespace varo::data {

/// Bytes of the longest value that is stored or read: the longest picture, and what its row holds
/// beside it.
inline constexpr qint64 kLongestValue = (qint64{1} << 29) + (qint64{1} << 20);

/// Bytes of the values for which every database has room.
inline constexpr qint64 kShortValue = 65536;

struct StatementDeleter {
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, StatementDeleter>;

/// Throws the Error that says what last failed on `database`.
[[noreturn]] void throwLastError(sqlite3* database);

/// Lets the next statements on `database` store a value of so many bytes, whatever values they may
/// read.
void allowValue(sqlite3* database, qint64 bytes);

/// Compiles the one statement in `text` and binds its values. Throws Error, also when the number of
/// values is not the number of `?`, when a text cannot be stored as it stands (U+0000, half a
/// surrogate pair), and when a second statement follows.
StatementHandle prepare(sqlite3* database, const QString& text, const Arguments& arguments = {});

/// Executes the statement up to its next row: true when there is one, false at its end. Throws
/// Error.
bool step(sqlite3_stmt* statement);

/// The text of `length` bytes of UTF-8 from the database, a U+FEFF at its start included; "" for
/// null.
QString textOf(const char* utf8, qsizetype length);

/// The field `column` of the current row, a floating-point number as the shortest text that reads
/// back as that number; of a text over `most` characters the beginning and an ellipsis. And the
/// name of a column of its result.
QString columnText(sqlite3_stmt* statement, int column,
                   qsizetype most = std::numeric_limits<qsizetype>::max());
QString columnName(sqlite3_stmt* statement, int column);

/// Runs a statement to its end. Throws Error.
void run(sqlite3* database, const QString& text, const Arguments& arguments = {});

/// Statements of one open file that have been run, compiled once and kept for the next time. To be
/// emptied before the file's handle closes.
class StatementCache {
  public:
    /// Runs a statement to its end, with other values or for the first time. Throws Error.
    void run(sqlite3* database, const QString& text, const Arguments& arguments = {});

    void clear() noexcept { idle_.clear(); }

  private:
    std::unordered_map<QString, StatementHandle> idle_;  ///< by their texts; null after a failure
};

/// Gives the statements on `database` the function exact_text(X); see Connection::query(). Throws
/// Error.
void addExactText(sqlite3* database);

}  // namespace varo::data
