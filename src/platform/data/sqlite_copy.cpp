#include "platform/data/sqlite_copy.h"

#include "platform/data/file_start.h"
#include "platform/data/sqlite_handle.h"

#include <QFile>
#include <QStorageInfo>

#include <sys/stat.h>
#include <utility>
#include <vector>

namespace varo::data {

namespace {

void copyBytes(const QString& from, const QString& to) {
    QFile copy(to);
    bool isWritten = copy.open(QIODevice::WriteOnly);
    readBytes(from, [&](const QByteArray& bytes) {
        isWritten = isWritten && copy.write(bytes) == bytes.size();
    });
    if (!isWritten || !copy.flush()) {
        throw Error(QStringLiteral("%1: %2").arg(to, copy.errorString()));
    }
}

/// The bytes that a copy of the file at `path` takes. Throws Error when the file is mostly holes,
/// which cost nothing until they are copied.
qint64 bytesToCopy(const QString& path) {
    // Compression by the file system, too, makes the file smaller than it says.
    constexpr qint64 kMostCompression = 64;
    constexpr qint64 kAlwaysCopied = 16 << 20;
    constexpr qint64 kBlock = 512;  // whatever the file system has
    struct stat file {};
    if (stat(QFile::encodeName(path).constData(), &file) != 0) {
        return 0;
    }
    // Some file systems know of no blocks.
    if (file.st_blocks > 0 && file.st_size > kAlwaysCopied &&
        file.st_size / kMostCompression > file.st_blocks * kBlock) {
        throw Error(QStringLiteral("%1: the file says that it has %2 MiB but holds only %3 KiB; it "
                                   "is not copied to be read")
                        .arg(path)
                        .arg(file.st_size >> 20)
                        .arg(file.st_blocks * kBlock >> 10));
    }
    return file.st_size;
}

}  // namespace

void requireRoom(const QString& folder, qint64 bytes) {
    const QStorageInfo storage(folder);
    if (storage.isValid() && storage.bytesAvailable() < bytes) {
        throw Error(QStringLiteral("%1: there is no room for a copy of %2 MiB, without which the "
                                   "file cannot be read")
                        .arg(folder)
                        .arg(bytes >> 20));
    }
}

SqliteCopy::SqliteCopy(const QString& path, const DatabaseHeader& header) {
    const DatabaseHandle handle = openHandle(path, Access::Write);
    // Who uses a write-ahead log may write at any time, who recovers a journal is kept out.
    const bool isWritable = sqlite3_db_readonly(handle.get(), "main") == 0;
    const FileLock lock(
        handle.get(), path,
        header.writesAhead && isWritable ? FileLock::Kind::Alone : FileLock::Kind::WithReaders);
    const SideFiles files = requireSideFilesOf(path, header);
    if (files.hasLog) {
        requireLatestLog(path, files);
    }
    std::vector<std::pair<QString, QString>> copied{{path, this->path()}};
    if (files.hasJournal) {
        copied.emplace_back(files.journal, this->path() + QLatin1StringView(kJournalSuffix));
    }
    if (files.hasLog) {
        copied.emplace_back(files.log, this->path() + QLatin1StringView(kLogSuffix));
    }
    qint64 bytes = 0;
    for (const auto& [from, to] : copied) {
        bytes += bytesToCopy(from);
    }
    requireRoom(folder_.path(), bytes);
    for (const auto& [from, to] : copied) {
        copyBytes(from, to);
    }
}

}  // namespace varo::data
