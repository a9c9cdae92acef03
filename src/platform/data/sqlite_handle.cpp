#include "platform/data/sqlite_handle.h"

#include "platform/data/statement.h"

#include <QFileInfo>

#include <algorithm>
#include <array>

namespace varo::data {

namespace {

// What is stored in a schema gets no rights at all; the library's tables need none.
void distrustContent(sqlite3* database) {
    constexpr std::pair<int, int> kSettings[] = {
        {SQLITE_DBCONFIG_DEFENSIVE, 1},      {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
        {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0}, {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
        {SQLITE_DBCONFIG_ENABLE_FKEY, 0},    {SQLITE_DBCONFIG_DQS_DML, 0},
        {SQLITE_DBCONFIG_DQS_DDL, 0},
    };
    for (const auto& [setting, value] : kSettings) {
        sqlite3_db_config(database, setting, value, nullptr);
    }
    sqlite3_limit(database, SQLITE_LIMIT_ATTACHED, 0);
    // Of virtual tables; the one that is kept reads an argument and can be in no file.
    std::array<const char*, 2> kept{"json_each", nullptr};
    sqlite3_drop_modules(database, kept.data());
    run(database, QStringLiteral("PRAGMA ignore_check_constraints = ON"));
    run(database, QStringLiteral("PRAGMA cell_size_check = ON"));
}

/// Takes from the open file the ways of sharing memory with other programs, which ends this program
/// when one of them cuts that file short. Without them a database that is given a write-ahead log
/// while it is open cannot be read.
std::unique_ptr<sqlite3_io_methods> withoutSharedMemory(sqlite3* database) {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    auto methods = std::make_unique<sqlite3_io_methods>(*file->pMethods);
    methods->iVersion = 1;
    file->pMethods = methods.get();
    return methods;
}

[[noreturn]] void failToTurn(const QString& path, const QString& why, Error::Cause cause) {
    throw Error(QStringLiteral("%1: the database has a write-ahead log, which it cannot be freed "
                               "of here: %2")
                    .arg(path, why),
                cause);
}

/// Writes what the write-ahead log holds into the database, which has a rollback journal then. The
/// log's index is kept in memory meanwhile: one that is shared with others ends the program when it
/// is cut short.
void turnToRollbackJournal(sqlite3* database, StatementWatch& watch, const QString& path,
                           const SideFiles& files) {
    if (sqlite3_db_readonly(database, "main") != 0) {
        failToTurn(path, QStringLiteral("the file is write-protected"),
                   Error::Cause::NeedsRecovery);
    }
    {
        const FileLock lock(database, path, FileLock::Kind::Alone);
        if (files.hasLog) {
            requireLatestLog(path, files);
        }
    }
    run(database, QStringLiteral("PRAGMA locking_mode = EXCLUSIVE"));
    try {
        requireRead(database, watch.readSchema());
        run(database, QStringLiteral("PRAGMA journal_mode = DELETE"));
        removeLogIndex(files);
    } catch (const Error& error) {
        if (error.isLocked()) {
            throw;
        }
        if (!QFileInfo(QFileInfo(files.log).absolutePath()).isWritable()) {
            failToTurn(path, QStringLiteral("its folder is write-protected"),
                       Error::Cause::ReadOnlyFolder);
        }
        failToTurn(path, error.description(), error.cause());
    }
    run(database, QStringLiteral("PRAGMA locking_mode = NORMAL"));
    run(database, QStringLiteral("Select 1 From sqlite_schema Limit 1"));
}

}  // namespace

DatabaseHandle openHandle(const QString& path, Access access, const TemporaryFileLayer* layer) {
    sqlite3* opened = nullptr;
    const int flags = SQLITE_OPEN_NOMUTEX |
                      (access == Access::Write ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY);
    const QByteArray name = QFileInfo(path).absoluteFilePath().toUtf8();
    const int result = layer == nullptr ? sqlite3_open_v2(name, &opened, flags, nullptr)
                                        : layer->open(name, &opened, flags);
    DatabaseHandle handle(opened);
    if (result != SQLITE_OK) {
        throw Error(QStringLiteral("%1: %2").arg(path, QString::fromUtf8(sqlite3_errstr(result))));
    }
    return handle;
}

FileLock::FileLock(sqlite3* database, const QString& path, Kind kind) {
    sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file_);
    int result = file_->pMethods->xLock(file_, SQLITE_LOCK_SHARED);
    for (const int level : {SQLITE_LOCK_RESERVED, SQLITE_LOCK_EXCLUSIVE}) {
        if (result == SQLITE_OK && kind == Kind::Alone) {
            result = file_->pMethods->xLock(file_, level);
        }
    }
    if (result != SQLITE_OK) {
        file_->pMethods->xUnlock(file_, SQLITE_LOCK_NONE);
        throw Error(QStringLiteral("%1: another program uses the database").arg(path),
                    result == SQLITE_BUSY ? Error::Cause::Locked : Error::Cause::Other);
    }
}

FileLock::~FileLock() {
    file_->pMethods->xUnlock(file_, SQLITE_LOCK_NONE);
}

SafeHandle openSafely(const QString& path, const DatabaseHeader& header, Access access) {
    const SideFiles files = requireSideFilesOf(path, header);
    auto layer = std::make_unique<TemporaryFileLayer>();
    DatabaseHandle handle = openHandle(path, access, layer.get());
    SafeHandle safe{std::move(layer), nullptr, nullptr, std::move(handle)};
    sqlite3* opened = safe.handle.get();
    sqlite3_busy_timeout(opened, kLockTimeout);
    safe.methods = withoutSharedMemory(opened);
    safe.watch = std::make_unique<StatementWatch>(opened, header.pageSize);
    distrustContent(opened);
    const qint64 size = QFileInfo(path).size();
    safe.watch->setFileSize(size);
    allowValuesOfFile(opened, size);
    if (header.writesAhead) {
        turnToRollbackJournal(opened, *safe.watch, path, files);
    }
    return safe;
}

void requireRead(sqlite3* database, int result) {
    if (result == SQLITE_AUTH) {
        throw Error(QStringLiteral("the statistics in the file have columns that are computed"));
    }
    if (result != SQLITE_OK) {
        throwLastError(database);
    }
}

void allowValuesOfFile(sqlite3* database, qint64 bytes) {
    // A row that is sorted holds what it is sorted by a second time.
    const qint64 room = std::min(bytes, kLongestValue) * 2 + kShortValue;
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, static_cast<int>(std::min(room, kLongestValue)));
}

}  // namespace varo::data
