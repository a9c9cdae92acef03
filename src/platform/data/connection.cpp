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

    // The file for a new statement.
    DatabaseFile& fileForStatement() const {
        DatabaseFile& opened = openFile();
        if (!opened.isInTransaction()) {
            requireInPlace();
        }
        opened.watch().restart();
        return opened;
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

    // A failure such as a full disk may have undone the whole transaction. What follows in it must
    // not become final on its own.
    DatabaseFile& fileForChange() const {
        DatabaseFile& opened = fileForStatement();
        if (depth > 0 && !opened.isInTransaction()) {
            throw Error(QStringLiteral("the transaction has been undone by an earlier failure"));
        }
        return opened;
    }

    QString path;
    std::unique_ptr<DatabaseFile> file;
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

void Connection::setLockWait(int milliseconds) {
    opened(state_).openFile().setLockWait(milliseconds);
}

void Connection::setCacheLimit(qint64 bytes) {
    opened(state_).openFile().setCacheLimit(bytes);
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

qint64 Connection::changesOfOthers() {
    return opened(state_).fileForStatement().changesOfOthers();
}

void Connection::setReplacedNotice(std::function<void()> tell) {
    opened(state_).tellReplaced = std::move(tell);
}

qint64 Connection::execute(const QString& statement, const Arguments& arguments) {
    DatabaseFile& file = opened(state_).fileForChange();
    return file.watch().during([&] { return file.execute(statement, arguments); });
}

Recordset Connection::query(const QString& statement, const Arguments& arguments) {
    DatabaseFile& file = opened(state_).fileForStatement();
    return Recordset(file.watch().during([&] {
        return std::make_shared<RowSource>(file, prepare(file.handle(), statement, arguments));
    }));
}

qint32 Connection::lastInsertedId() const {
    const qint64 id = opened(state_).openFile().lastInsertedId();
    if (id > std::numeric_limits<qint32>::max() || id < std::numeric_limits<qint32>::min()) {
        throw Error(QStringLiteral("the table has run out of identifiers"));
    }
    return static_cast<qint32>(id);
}

QString Connection::lengthOf(const QString& table, const QString& column) const {
    return opened(state_).openFile().lengthOf(table, column);
}

BlobField Connection::field(const QString& table, const QString& column, qint32 id) {
    DatabaseFile& file = opened(state_).fileForChange();
    return BlobField(file.field(table, column, id), state_->replacements);
}

std::optional<TableStructure> Connection::structure(const QString& table) {
    DatabaseFile& file = opened(state_).fileForStatement();
    return file.watch().during([&] { return file.structure(table); });
}

QStringList Connection::tables() {
    DatabaseFile& file = opened(state_).fileForStatement();
    return file.watch().during([&] { return file.tables(); });
}

QStringList Connection::damages() {
    return opened(state_).fileForStatement().damages();
}

Transaction::Transaction(Connection& connection) : state_(connection.state_) {
    DatabaseFile& file = opened(state_).fileForChange();
    const int depth = state_->depth + 1;
    file.begin(depth);
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
        state_->fileForChange().commit(depth_);
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
    state_->file->undo(depth_);
}

ReadSnapshot::ReadSnapshot(Connection& connection) : state_(connection.state_) {
    opened(state_).fileForStatement().beginReading();
}

ReadSnapshot::~ReadSnapshot() {
    if (state_->file != nullptr) {
        state_->file->endReading();
    }
}

}  // namespace varo::data
