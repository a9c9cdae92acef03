#include "platform/data/connection.h"

#include "platform/data/driver.h"
#include "platform/data/replacements.h"
#include "platform/data/row_source.h"
#include "platform/data/statement.h"

#include <limits>
#include <utility>

namespace varo::data {

/// An open file and the transactions on it. Transactions keep it beyond the connection's close(),
/// when its file is gone.
struct ConnectionState {
    ConnectionState(const QString& filePath, std::unique_ptr<DatabaseFile> opened)
        : path(filePath), file(std::move(opened)) {}
    ConnectionState(const ConnectionState&) = delete;
    ConnectionState& operator=(const ConnectionState&) = delete;
    ~ConnectionState() { close(); }

    void close() noexcept {
        if (file != nullptr) {
            statements.clear();
            file->releaseUsers();
            file.reset();
        }
    }

    DatabaseFile& openFile() const {
        if (file == nullptr) {
            throw Error(QStringLiteral("the connection is closed"));
        }
        return *file;
    }

    // The handle for a new statement.
    sqlite3* handle() const {
        sqlite3* database = openFile().handle();
        if (sqlite3_get_autocommit(database) != 0) {
            requireInPlace();
        }
        file->watch().restart();
        return database;
    }

    void requireInPlace() const {
        try {
            file->requireInPlace();
        } catch (const Error&) {
            if (const auto tell = std::exchange(tellReplaced, {})) {
                tell();
            }
            throw;
        }
    }

    // SQLite undoes a whole transaction by itself after some failures, such as a full disk. What
    // follows in that transaction must not become final on its own.
    sqlite3* writableHandle() const {
        sqlite3* database = handle();
        if (depth > 0 && sqlite3_get_autocommit(database) != 0) {
            throw Error(QStringLiteral("the transaction has been undone by an earlier failure"));
        }
        return database;
    }

    QString path;
    std::unique_ptr<DatabaseFile> file;
    StatementCache statements;
    std::shared_ptr<Replacements> replacements = std::make_shared<Replacements>();
    mutable std::function<void()> tellReplaced;
    int depth = 0;
};

namespace {

ConnectionState& opened(const std::shared_ptr<ConnectionState>& state) {
    if (state == nullptr) {
        throw Error(QStringLiteral("the connection is closed"));
    }
    return *state;
}

QString savepoint(int depth) {
    return QStringLiteral("level%1").arg(depth);
}

}  // namespace

Connection::Connection() = default;
Connection::~Connection() {
    close();
}
Connection::Connection(Connection&&) noexcept = default;

Connection& Connection::operator=(Connection&& other) noexcept {
    if (this != &other) {
        close();
        state_ = std::move(other.state_);
    }
    return *this;
}

void Connection::open(const QString& path, Access access) {
    close();
    auto state = std::make_shared<ConnectionState>(path, openDatabaseFile(path, access));
    addExactText(state->file->handle());
    state_ = std::move(state);
}

void Connection::close() noexcept {
    if (state_ != nullptr) {
        state_->close();
        state_.reset();
    }
}

bool Connection::isOpen() const noexcept {
    return state_ != nullptr;
}

QString Connection::path() const {
    return isOpen() ? state_->path : QString();
}

void Connection::setInterrupt(std::function<bool()> isWanted) {
    opened(state_).openFile().watch().setInterrupt(std::move(isWanted));
}

bool Connection::isInPlace() const {
    try {
        opened(state_).openFile().requireInPlace();
    } catch (const Error& error) {
        return !error.isReplaced();
    }
    return true;
}

void Connection::setReplacedNotice(std::function<void()> tell) {
    opened(state_).tellReplaced = std::move(tell);
}

qint64 Connection::execute(const QString& statement, const Arguments& arguments) {
    sqlite3* database = opened(state_).writableHandle();
    state_->file->watch().during([&] { state_->statements.run(database, statement, arguments); });
    return sqlite3_changes64(database);
}

Recordset Connection::query(const QString& statement, const Arguments& arguments) {
    sqlite3* database = opened(state_).handle();
    return Recordset(state_->file->watch().during([&] {
        return std::make_shared<RowSource>(*state_->file, prepare(database, statement, arguments));
    }));
}

qint32 Connection::lastInsertedId() const {
    const qint64 id = sqlite3_last_insert_rowid(opened(state_).openFile().handle());
    if (id > std::numeric_limits<qint32>::max() || id < std::numeric_limits<qint32>::min()) {
        throw Error(QStringLiteral("the table has run out of identifiers"));
    }
    return static_cast<qint32>(id);
}

BlobField Connection::field(const QString& table, const QString& column, qint32 id) {
    opened(state_).writableHandle();
    return BlobField(state_->file->field(table, column, id), state_->replacements);
}

std::optional<TableStructure> Connection::structure(const QString& table) {
    opened(state_).handle();
    return state_->file->watch().during([&] { return state_->file->structure(table); });
}

QStringList Connection::tables() {
    opened(state_).handle();
    return state_->file->watch().during([&] { return state_->file->tables(); });
}

QStringList Connection::damages() {
    opened(state_).handle();
    return state_->file->damages();
}

Transaction::Transaction(Connection& connection) : state_(connection.state_) {
    sqlite3* database = opened(state_).writableHandle();
    const int depth = state_->depth + 1;
    // The write lock is taken at once: a wait for it in the middle could end in a deadlock.
    state_->statements.run(database, depth == 1 ? QStringLiteral("BEGIN IMMEDIATE")
                                                : QStringLiteral("SAVEPOINT ") + savepoint(depth));
    if (depth == 1) {
        state_->replacements->incomplete.clear();
    }
    incompleteBefore_ = state_->replacements->incomplete;
    state_->depth = depth;
    depth_ = depth;
    open_ = true;
}

Transaction::~Transaction() {
    if (open_) {
        undo();
    }
}

void Transaction::commit() {
    if (!open_ || depth_ != state_->depth) {
        throw Error(QStringLiteral("the transaction is not the innermost one that is open"));
    }
    try {
        if (depth_ == 1 && !state_->replacements->incomplete.empty()) {
            throw Error(QStringLiteral("the bytes of a field have not all arrived"));
        }
        if (depth_ == 1) {
            state_->openFile();
            state_->requireInPlace();
        }
        state_->statements.run(state_->writableHandle(),
                               depth_ == 1 ? QStringLiteral("COMMIT")
                                           : QStringLiteral("RELEASE ") + savepoint(depth_));
    } catch (const Error&) {
        undo();
        throw;
    }
    state_->depth = depth_ - 1;
    open_ = false;
}

void Transaction::undo() noexcept {
    open_ = false;
    state_->depth = depth_ - 1;
    state_->replacements->incomplete = std::move(incompleteBefore_);
    if (state_->file == nullptr) {
        return;
    }
    state_->file->releaseUndone();
    if (sqlite3_get_autocommit(state_->file->handle()) != 0) {
        return;
    }
    const QString statements =
        depth_ == 1 ? QStringLiteral("ROLLBACK")
                    : QStringLiteral("ROLLBACK TO %1; RELEASE %1").arg(savepoint(depth_));
    sqlite3_exec(state_->file->handle(), statements.toUtf8().constData(), nullptr, nullptr,
                 nullptr);
}

ReadSnapshot::ReadSnapshot(Connection& connection) : state_(connection.state_) {
    run(opened(state_).handle(), QStringLiteral("BEGIN"));
    try {
        // The state is that of the first read.
        run(state_->handle(), QStringLiteral("Select 1 From sqlite_schema Limit 1"));
        run(state_->handle(), QStringLiteral("PRAGMA query_only = ON"));
    } catch (const Error&) {
        end();
        throw;
    }
}

ReadSnapshot::~ReadSnapshot() {
    end();
}

void ReadSnapshot::end() noexcept {
    if (state_->file != nullptr) {
        sqlite3_exec(state_->file->handle(), "PRAGMA query_only = OFF; COMMIT", nullptr, nullptr,
                     nullptr);
    }
}

}  // namespace varo::data
