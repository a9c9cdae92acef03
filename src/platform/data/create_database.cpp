#include "platform/data/create_database.h"

#include "platform/data/error.h"
#include "platform/data/sqlite_driver.h"
#include "platform/data/unfinished_file.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <memory>
#include <sqlite3.h>

namespace varo::data {

namespace {

using Handle = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;

void writeDatabase(const QString& path, const QString& script) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(path.toUtf8().constData(), &opened,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    const Handle handle(opened, sqlite3_close_v2);
    const QByteArray statements = "BEGIN;\n" + script.toUtf8() + "\n;COMMIT;";
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

// Recovers the database at `path` and holds an exclusive lock on it while the handle is open.
// Null when the file is none of SQLite's, which a journal beside it must not be applied to, or is
// damaged beyond reading, so that no other program can have it open.
Handle lockedDatabase(const QString& path) {
    if (!isSqliteFile(path)) {
        return {nullptr, sqlite3_close_v2};
    }
    sqlite3* opened = nullptr;
    int result =
        sqlite3_open_v2(path.toUtf8().constData(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    Handle handle(opened, sqlite3_close_v2);
    if (result == SQLITE_OK) {
        sqlite3_busy_timeout(opened, kLockTimeout);
        result = sqlite3_exec(opened, "PRAGMA journal_mode = DELETE; BEGIN EXCLUSIVE", nullptr,
                              nullptr, nullptr);
    }
    if (result == SQLITE_NOTADB || result == SQLITE_CORRUPT) {
        return {nullptr, sqlite3_close_v2};
    }
    if (result == SQLITE_OK && sqlite3_db_readonly(opened, "main") != 0) {
        result = SQLITE_READONLY;
    }
    if (result != SQLITE_OK) {
        throw Error(QStringLiteral("%1: %2").arg(path, QString::fromUtf8(sqlite3_errstr(result))));
    }
    return handle;
}

// Removes what SQLite would take for the journal of the file at `path`.
void removeJournals(const QString& path) {
    for (const char* suffix : {"-journal", "-wal", "-shm"}) {
        QFile journal(path + QLatin1StringView(suffix));
        if (journal.exists() && !journal.remove()) {
            throw Error(QStringLiteral("%1: %2").arg(journal.fileName(), journal.errorString()));
        }
    }
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

void replaceDatabase(const QString& unfinished, const QString& path) {
    const QFileInfo old(path);
    Handle lock(nullptr, sqlite3_close_v2);
    if (old.isFile() && old.size() > 0) {
        lock = lockedDatabase(old.absoluteFilePath());
    }
    removeJournals(old.absoluteFilePath());
    std::error_code failure;
    std::filesystem::rename(QFileInfo(unfinished).filesystemAbsoluteFilePath(),
                            old.filesystemAbsoluteFilePath(), failure);
    if (failure) {
        throw Error(QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(failure.message())));
    }
}

}  // namespace varo::data
