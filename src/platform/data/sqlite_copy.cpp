#include "platform/data/sqlite_copy.h"

#include "platform/data/file_start.h"
#include "platform/data/sqlite_handle.h"

#include <QFile>

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

}  // namespace

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
    copyBytes(path, this->path());
    if (files.hasJournal) {
        copyBytes(files.journal, this->path() + QLatin1StringView(kJournalSuffix));
    }
    if (files.hasLog) {
        copyBytes(files.log, this->path() + QLatin1StringView(kLogSuffix));
    }
}

}  // namespace varo::data
