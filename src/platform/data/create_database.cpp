#include "platform/data/create_database.h"

#include "platform/data/access/create_file.h"
#include "platform/data/access/whole_file.h"
#include "platform/data/error.h"
#include "platform/data/side_files.h"
#include "platform/data/sqlite_handle.h"
#include "platform/data/unfinished_file.h"

#include <QFileInfo>

#include <filesystem>
#include <memory>
#include <optional>
#include <sqlite3.h>

namespace varo::data {

namespace {

using Handle = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;

void writeDatabase(const QString& path, const QString& script) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(path.toUtf8().constData(), &opened,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    const Handle handle(opened, sqlite3_close_v2);
    const QByteArray statements = "BEGIN;\n" + script.toUtf8() +
                                  "\n;PRAGMA user_version = " + QByteArray::number(newMark()) +
                                  ";COMMIT;";
    if (result != SQLITE_OK ||
        sqlite3_exec(opened, statements.constData(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw Error(QStringLiteral("%1: %2").arg(path, QString::fromUtf8(sqlite3_errmsg(opened))));
    }
}

void requireNothingAt(const QString& path) {
    const QFileInfo info(path);
    if (info.exists() || info.isSymLink()) {
        throw Error(QStringLiteral("%1 is there already").arg(path));
    }
}

/// Recovers the database at `path` and holds an exclusive lock on it while the result lives.
/// Nothing when it is damaged beyond reading, so that no other program can have it open.
std::optional<SafeHandle> lockedDatabase(const QString& path, const DatabaseHeader& header) {
    SafeHandle safe = openSafely(path, header, Access::Write);
    sqlite3* opened = safe.handle.get();
    int result = sqlite3_exec(opened, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    if (result == SQLITE_NOTADB || result == SQLITE_CORRUPT) {
        return std::nullopt;
    }
    if (result == SQLITE_OK && sqlite3_db_readonly(opened, "main") != 0) {
        result = SQLITE_READONLY;
    }
    if (result != SQLITE_OK) {
        throw Error(QStringLiteral("%1: %2").arg(path, QString::fromUtf8(sqlite3_errstr(result))));
    }
    return safe;
}

}  // namespace

void createDatabase(const QString& path, const QString& script) {
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    requireNothingAt(absolutePath);
    const UnfinishedFile file(absolutePath);
    writeDatabase(file.path(), script);
    requireNothingAt(absolutePath);
    replaceDatabase(file.path(), absolutePath);
}

void createAccessDatabase(const QString& path, access::Version version,
                          const QList<access::NewTable>& tables,
                          const std::function<void(const QString& unfinished)>& fill) {
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    requireNothingAt(absolutePath);
    const UnfinishedFile unfinished(absolutePath);
    access::createFile(unfinished.path(), version);
    {
        const auto file =
            access::lockedFile(unfinished.path(), *access::headerOf(unfinished.path()));
        for (const access::NewTable& table : tables) {
            access::createTable(*file, table);
        }
        file->commit();
    }
    fill(unfinished.path());
    requireNothingAt(absolutePath);
    replaceDatabase(unfinished.path(), absolutePath);
}

void replaceDatabase(const QString& unfinished, const QString& path) {
    const QFileInfo old(path);
    const QString oldPath = old.absoluteFilePath();
    std::optional<DatabaseHeader> header;
    std::optional<SafeHandle> lock;
    if (old.exists() && !old.isFile()) {
        throw Error(QStringLiteral("%1 is no file").arg(path));
    }
    if (old.exists()) {
        header = databaseHeader(oldPath);
    }
    std::unique_ptr<access::PageFile> accessLock;
    if (header) {
        lock = lockedDatabase(oldPath, *header);
    } else if (old.exists()) {
        const auto accessHeader = access::headerOf(oldPath);
        if (accessHeader && !accessHeader->isJet3()) {
            accessLock = access::lockedFile(oldPath, *accessHeader);
        }
    }
    if (const QString journal = access::Journal::pathOf(oldPath);
        access::Journal::exists(journal)) {
        throw Error(QStringLiteral("%1 belongs to another file; move it away").arg(journal));
    }
    const SideFiles files = requireSideFilesOf(oldPath, header);
    removeSideFiles(files);
    std::error_code failure;
    std::filesystem::rename(QFileInfo(unfinished).filesystemAbsoluteFilePath(),
                            old.filesystemAbsoluteFilePath(), failure);
    if (failure) {
        throw Error(QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(failure.message())));
    }
}

}  // namespace varo::data
