#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace varo::data {

/// Length of the header at the start of an SQLite database.
inline constexpr int kDatabaseHead = 100;

/// What that header says about the database.
struct DatabaseHeader {
    QByteArray bytes;  ///< the header itself; fewer than kDatabaseHead where the file is shorter
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

/// The header at the start of `bytes`, a piece of a database; without the number of pages that the
/// file has room for. Nothing when there is none.
std::optional<DatabaseHeader> headerIn(const QByteArray& bytes);

/// That of the file at `path`; nothing when it is none of SQLite's. Throws Error when the file
/// cannot be read.
std::optional<DatabaseHeader> databaseHeader(const QString& path);

}  // namespace varo::data
