#pragma once

#include "platform/data/database_header.h"

#include <QString>

#include <optional>

namespace varo::data {

/// What SQLite puts behind the name of a database for the names of its files.
inline constexpr auto kJournalSuffix = "-journal";
inline constexpr auto kLogSuffix = "-wal";
inline constexpr auto kLogIndexSuffix = "-shm";

/// What lies beside a database: its rollback journal, its write-ahead log and the index of that.
struct SideFiles {
    QString journal;
    QString log;
    QString logIndex;
    bool hasJournal = false;  ///< one with content, which may have to be rolled back
    bool hasLog = false;      ///< one with content
};

/// Looks at what lies beside the database at `path`, before SQLite does. Opens nothing but regular
/// files and changes nothing. Throws Error, which names the file, unless each is missing or a
/// regular file with one name that can be of this database: a journal of pages of its size, and
/// with no more of them than the two have room for, whose first page has the header of the
/// database, or one that a commit can have made that of, and which names no other file; a log of
/// pages of its size. Without `database`, as when the file is gone, any page size will do.
SideFiles requireSideFilesOf(const QString& path, const std::optional<DatabaseHeader>& database);

/// Throws Error unless the log that lies beside the database at `path` was written after the last
/// change of that file, its name and its permissions, or isLogOf() it: a file that has been put in
/// the place of another one does not get what that one's log holds. Nobody may change them
/// meanwhile.
void requireLatestLog(const QString& path, const SideFiles& files);

/// Removes the index of a write-ahead log, if it is one. To be called while nobody else can have
/// the database open.
void removeLogIndex(const SideFiles& files);

/// Removes all of them, in the same way. Throws Error when a journal or log cannot be removed.
void removeSideFiles(const SideFiles& files);

}  // namespace varo::data
