#include "platform/data/sqlite_copy.h"

#include "platform/data/file_start.h"
#include "platform/data/sqlite_handle.h"

#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>
#include <utility>
#include <vector>

namespace varo::data {

namespace {

/// Leaves holes where there are zeros: a file that is mostly holes takes no more room as a copy.
void copyBytes(const QString& from, const QString& to) {
    QFile copy(to);
    bool isWritten = copy.open(QIODevice::WriteOnly);
    qint64 size = 0;
    readBytes(from, [&](const QByteArray& bytes) {
        const bool isHole = std::ranges::all_of(bytes, [](char byte) { return byte == '\0'; });
        isWritten = isWritten && (isHole || (copy.seek(size) && copy.write(bytes) == bytes.size()));
        size += bytes.size();
    });
    if (!isWritten || !copy.flush() || !copy.resize(size)) {
        throw Error(QStringLiteral("%1: %2").arg(to, copy.errorString()));
    }
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

SqliteCopy::SqliteCopy(const QString& path, const DatabaseHeader& header, Access access) {
    const DatabaseHandle handle = openHandle(path, Access::Write);
    // Who uses a write-ahead log may write at any time, who recovers a journal is kept out.
    const bool isWritable = sqlite3_db_readonly(handle.get(), "main") == 0;
    const FileLock lock(
        handle.get(), path,
        header.writesAhead && isWritable ? FileLock::Kind::Alone : FileLock::Kind::WithReaders);
    const SideFiles files = requireSideFilesOf(path, header);
    std::vector<std::pair<QString, QString>> copied{{path, this->path()}};
    if (files.hasJournal) {
        copied.emplace_back(files.journal, this->path() + QLatin1StringView(kJournalSuffix));
    }
    if (files.hasLog) {
        copied.emplace_back(files.log, this->path() + QLatin1StringView(kLogSuffix));
    }
    qint64 bytes = 0;
    for (const auto& [from, to] : copied) {
        bytes += QFileInfo(from).size();
    }
    if (access == Access::Glance && bytes > kMostGlanced) {
        throw Error(QStringLiteral("%1: %2 MiB would have to be copied to read the file")
                        .arg(path)
                        .arg(bytes >> 20),
                    Error::Cause::NotCopied);
    }
    if (files.hasLog) {
        requireLatestLog(path, files);
    }
    requireRoom(folder_.path(), bytes);
    for (const auto& [from, to] : copied) {
        copyBytes(from, to);
    }
}

}  // namespace varo::data
