#pragma once

#include <QString>

#include <optional>

namespace varo::data {

/// What SQLite puts behind the name of a database for the names of its files.
inline constexpr auto kJournalSuffix = "-journal";
inline constexpr auto kLogSuffix = "-wal";
inline constexpr auto kLogIndexSuffix = "-shm";

/// What the first bytes of an SQLite database say about it.
struct DatabaseHeader {
    qint64 pageSize = 0;
    qint64 pageCount = 0;                ///< as many as the file has room for
    quint32 changes = 0;                 ///< commits, which are counted in 32 bits
    bool writesAhead = false;            ///< it has a write-ahead log instead of a rollback journal
    quint32 schemaVersion = 0;           ///< grows with each change of the tables
    quint32 encoding = 0;                ///< of texts
    quint32 mark = 0;                    ///< see newMark()
    std::optional<quint32> statedPages;  ///< as many as it says that it has, if it says so
};

/// A random number for a new database, by which what belongs to another one is told; it is kept as
/// SQLite's user version, which is at this place of the file.
qint32 newMark();
inline constexpr qint64 kMarkPlace = 60;

/// Those of the file at `path`; nothing when they are none of SQLite's. Throws Error when the file
/// cannot be read.
std::optional<DatabaseHeader> databaseHeader(const QString& path);

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
/// with no more of them than the two have room for, whose first page has the mark of the database
/// and is that of the last commit or the one before, and which names no other file; a log of pages
/// of its size. Without `database`, as when the file is gone, any page size will do.
SideFiles requireSideFilesOf(const QString& path, const std::optional<DatabaseHeader>& database);

/// Throws Error unless the log that lies beside the database at `path` was written after the last
/// change of that file, its name and its permissions: a file that has been put in the place of
/// another one does not get what that one's log holds.
void requireLatestLog(const QString& path, const SideFiles& files);

/// Removes the index of a write-ahead log, if it is one. To be called while nobody else can have
/// the database open.
void removeLogIndex(const SideFiles& files);

/// Removes all of them, in the same way. Throws Error when a journal or log cannot be removed.
void removeSideFiles(const SideFiles& files);

}  // namespace varo::data
