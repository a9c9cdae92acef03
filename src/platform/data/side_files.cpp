#include "platform/data/side_files.h"

#include "platform/data/error.h"
#include "platform/data/file_start.h"
#include "platform/data/log_content.h"
#include "platform/data/side_file_heads.h"
#include "platform/files/regular_file.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>

namespace varo::data {

namespace {

constexpr int kJournalHead = 28;
constexpr int kLogHead = 32;

quint32 number(const QByteArray& bytes, qsizetype place) {
    return qFromBigEndian<quint32>(bytes.constData() + place);
}

bool isPageSize(qint64 size) {
    return size >= 512 && size <= 65536 && std::has_single_bit(static_cast<quint64>(size));
}

[[noreturn]] void refuse(const QString& path, const QString& why, Error::Cause cause) {
    throw Error(
        QStringLiteral("%1: %2; move it away to open the database without it").arg(path, why),
        cause);
}

[[noreturn]] void refuseIrregular(const QString& path) {
    refuse(path,
           QStringLiteral("lies in the place of a journal but is a link, a folder or a device"),
           Error::Cause::NoRegularFile);
}

/// The size of the file at `path`, 0 when there is none. Throws Error when it is no regular file
/// that has this name alone.
qint64 sizeOfRegularFile(const QString& path) {
    const std::filesystem::path native = QFileInfo(path).filesystemFilePath();
    std::error_code failure;
    const auto status = std::filesystem::symlink_status(native, failure);
    if (status.type() == std::filesystem::file_type::not_found) {
        return 0;
    }
    if (status.type() != std::filesystem::file_type::regular ||
        std::filesystem::hard_link_count(native, failure) > 1) {
        refuseIrregular(path);
    }
    return QFileInfo(path).size();
}

void openSideFile(QFile& file) {
    switch (openRegularFile(file)) {
        case RegularFileProblem::None:
            break;
        case RegularFileProblem::NotRegular:
            refuseIrregular(file.fileName());
        default:
            throw Error(QStringLiteral("%1: %2").arg(file.fileName(), qt_error_string(errno)));
    }
}

/// What the first page that the journal at `path` restores says of the database; nothing when it
/// does not restore that page.
std::optional<DatabaseHeader> headerBefore(const QString& path, qint64 sectorSize,
                                           qint64 pageSize) {
    QFile journal(path);
    openSideFile(journal);
    constexpr int kPageNumber = 4;
    const qint64 recordSize = kPageNumber + pageSize + 4;  // with a checksum
    for (qint64 part = 0; journal.seek(part);) {
        const QByteArray head = journal.read(kJournalHead);
        if (head.size() < kJournalHead || !head.startsWith(kJournalMagic)) {
            break;
        }
        const qint64 records = part + sectorSize;
        const qint64 room = (journal.size() - records) / recordSize;
        const qint64 count = std::min<qint64>(number(head, kJournalMagic.size()), room);
        for (qint64 i = 0; i < count; ++i) {
            journal.seek(records + i * recordSize);
            const QByteArray record = journal.read(kPageNumber + kDatabaseHead);
            if (record.size() == kPageNumber + kDatabaseHead && number(record, 0) == 1) {
                return headerIn(record.mid(kPageNumber)).value_or(DatabaseHeader());
            }
        }
        if (count <= 0) {
            break;
        }
        const qint64 end = records + count * recordSize;
        part = (end + sectorSize - 1) / sectorSize * sectorSize;
    }
    return std::nullopt;
}

/// The header without what a commit may change: the format of its journal, its counts of commits,
/// pages and free pages, the version of its tables and the largest root of one, and who wrote it.
QByteArray keptOf(const DatabaseHeader& header) {
    QByteArray bytes = header.bytes;
    for (const auto& [first, end] :
         {std::pair(18, 20), std::pair(24, 44), std::pair(52, 56), std::pair(92, 100)}) {
        bytes.replace(first, end - first, QByteArray(end - first, '\0'));
    }
    return bytes;
}

/// Whether the database can have had this header, the one in a journal, before its last commit.
/// SQLite writes the first page once in a transaction, when it commits, with a greater count of
/// commits; until then it is as the journal has it.
bool canFollow(const DatabaseHeader& database, const DatabaseHeader& before) {
    if (before.bytes.size() < kDatabaseHead || database.bytes.size() < kDatabaseHead) {
        return false;
    }
    const quint32 commits = database.changes - before.changes;
    if (commits == 0) {
        return database.bytes == before.bytes;
    }
    return commits == 1 && keptOf(database) == keptOf(before) &&
           static_cast<qint32>(database.schemaVersion - before.schemaVersion) >= 0;
}

/// Whether the database can have got this header from the other one, the one in a journal, in a way
/// in which another copy of the database can have got it, too: a commit sets the mark or an
/// application's number, or is not counted, which early versions of SQLite do once for each lock.
bool mayFollow(const DatabaseHeader& database, const DatabaseHeader& before) {
    return before.bytes.size() == kDatabaseHead && database.bytes.size() == kDatabaseHead &&
           database.changes - before.changes <= 1 &&
           static_cast<qint32>(database.schemaVersion - before.schemaVersion) >= 0;
}

void requireJournalOf(const QString& path, qint64 size,
                      const std::optional<DatabaseHeader>& database) {
    const QByteArray head = fileStart(path, kJournalHead);
    constexpr qint64 kMagicSize = kJournalMagic.size();
    if (size >= kMagicSize &&
        fileBytes(path, size - kMagicSize, static_cast<int>(kMagicSize)) == kJournalMagic) {
        refuse(path, QStringLiteral("the journal names another file"),
               Error::Cause::ForeignJournal);
    }
    // Of a head that was being written the rest is missing or zero. Nothing is restored then.
    if (!beginsJournal(head)) {
        refuse(path, QStringLiteral("lies in the place of a journal but is none"),
               Error::Cause::ForeignJournal);
    }
    const qint64 sectorSize = head.size() < kJournalHead ? 0 : number(head, 20);
    if (!head.startsWith(kJournalMagic) || sectorSize == 0) {
        return;  // nothing is restored from it
    }
    const qint64 pageSize = number(head, 24);
    if (!isPageSize(pageSize) || sectorSize < 32 || sectorSize > 65536) {
        refuse(path, QStringLiteral("lies in the place of a journal but is none"),
               Error::Cause::ForeignJournal);
    }
    const qint64 pages = number(head, 16);
    if (!database) {
        return;
    }
    // Without the first page in the journal, that of the database is as before the transaction.
    const auto before = headerBefore(path, sectorSize, pageSize);
    const bool isOfIt = before ? canFollow(*database, *before)
                               : !database->statedPages || pages == *database->statedPages;
    const bool hasItsPages =
        pageSize == database->pageSize && pages <= database->pageCount + size / (pageSize + 8);
    if (hasItsPages && before && !isOfIt && mayFollow(*database, *before)) {
        throw Error(QStringLiteral("%1: a program that was killed left this journal, but it cannot "
                                   "be told whether with this file; copy both first, then open the "
                                   "library with the program that wrote it")
                        .arg(path),
                    Error::Cause::UncertainJournal);
    }
    if (!hasItsPages || !isOfIt) {
        refuse(path, QStringLiteral("the journal belongs to another file"),
               Error::Cause::ForeignJournal);
    }
}

void requireLogOf(const QString& path, qint64 /*size*/,
                  const std::optional<DatabaseHeader>& database) {
    const QByteArray head = fileStart(path, kLogHead);
    const qint64 pageSize = head.size() < kLogHead ? 0 : number(head, 8);
    if (!isPageSize(pageSize) || !beginsLog(head)) {
        refuse(path, QStringLiteral("lies in the place of a write-ahead log but is none"),
               Error::Cause::ForeignLog);
    }
    if (database && (pageSize != database->pageSize || !database->writesAhead)) {
        refuse(path, QStringLiteral("the write-ahead log belongs to another file"),
               Error::Cause::ForeignLog);
    }
}

/// Whether a file with content lies at `path`, which `requireOf` lets pass.
bool hasFileOf(const QString& path, const std::optional<DatabaseHeader>& database,
               void (*requireOf)(const QString&, qint64, const std::optional<DatabaseHeader>&)) {
    const qint64 size = sizeOfRegularFile(path);
    if (size == 0) {
        return false;
    }
    try {
        requireOf(path, size, database);
    } catch (const Error&) {
        // Another program has removed its journal meanwhile.
        if (sizeOfRegularFile(path) == 0) {
            return false;
        }
        throw;
    }
    return true;
}

}  // namespace

SideFiles requireSideFilesOf(const QString& path, const std::optional<DatabaseHeader>& database) {
    const QFileInfo file(path);
    const QString name = file.exists() ? file.canonicalFilePath() : file.absoluteFilePath();
    SideFiles found{name + QLatin1StringView(kJournalSuffix), name + QLatin1StringView(kLogSuffix),
                    name + QLatin1StringView(kLogIndexSuffix)};
    found.hasJournal = hasFileOf(found.journal, database, requireJournalOf);
    found.hasLog = hasFileOf(found.log, database, requireLogOf);
    sizeOfRegularFile(found.logIndex);
    return found;
}

void requireLatestLog(const QString& path, const SideFiles& files) {
    struct stat database {};
    struct stat log {};
    QFile file(files.log);
    openSideFile(file);
    const bool isLatest = stat(QFile::encodeName(path).constData(), &database) == 0 &&
                          fstat(file.handle(), &log) == 0 &&
                          std::pair(database.st_ctim.tv_sec, database.st_ctim.tv_nsec) <=
                              std::pair(log.st_mtim.tv_sec, log.st_mtim.tv_nsec);
    if (!isLatest && !isLogOf(path, file)) {
        throw Error(QStringLiteral("%1: the file has been changed, copied or replaced since this "
                                   "write-ahead log of another program was written; copy both "
                                   "first, then open the library with the program that wrote it")
                        .arg(files.log),
                    Error::Cause::UncertainLog);
    }
}

void removeLogIndex(const SideFiles& files) {
    if (!QFileInfo::exists(files.logIndex)) {
        return;
    }
    if (beginsLogIndex(fileStart(files.logIndex, kSideFileHead))) {
        QFile::remove(files.logIndex);
    }
}

void removeSideFiles(const SideFiles& files) {
    for (const QString& path : {files.journal, files.log}) {
        QFile file(path);
        if (file.exists() && !file.remove()) {
            throw Error(QStringLiteral("%1: %2").arg(path, file.errorString()));
        }
    }
    removeLogIndex(files);
}

}  // namespace varo::data
