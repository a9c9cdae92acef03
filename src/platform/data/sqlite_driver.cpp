#include "platform/data/sqlite_driver.h"

#include "platform/data/database_header.h"
#include "platform/data/file_start.h"
#include "platform/data/sqlite_copy.h"
#include "platform/data/sqlite_handle.h"
#include "platform/data/sqlite_structure.h"
#include "platform/data/statement.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <sys/stat.h>

namespace varo::data {

namespace {

struct BlobDeleter {
    void operator()(sqlite3_blob* blob) const noexcept { sqlite3_blob_close(blob); }
};

/// Which file is at a path, and how long it is.
struct FileAt {
    explicit FileAt(const QString& path) {
        isKnown = ::stat(QFile::encodeName(path).constData(), &state) == 0;
        isGone = !isKnown && (errno == ENOENT || errno == ENOTDIR);
    }

    bool isSameAs(const FileAt& other) const {
        return state.st_dev == other.state.st_dev && state.st_ino == other.state.st_ino;
    }

    /// Whether the same file has been neither written nor given other permissions or names.
    bool isUnchangedSince(const FileAt& other) const {
        const auto isSame = [](const timespec& one, const timespec& two) {
            return one.tv_sec == two.tv_sec && one.tv_nsec == two.tv_nsec;
        };
        return state.st_size == other.state.st_size && isSame(state.st_mtim, other.state.st_mtim) &&
               isSame(state.st_ctim, other.state.st_ctim);
    }

    struct stat state {};
    bool isKnown = false;
    bool isGone = false;
};

/// The first bytes of the open file, as they are at this moment; "" when there are fewer.
QByteArray currentHead(sqlite3* database) {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    QByteArray bytes(kDatabaseHead, '\0');
    const int result = file->pMethods->xRead(file, bytes.data(), kDatabaseHead, 0);
    return result == SQLITE_OK ? bytes : QByteArray();
}

/// Whether there is a journal by which the last commit in the open file can still be taken back.
bool hasJournal(sqlite3* database) {
    const char* journal = sqlite3_filename_journal(sqlite3_db_filename(database, "main"));
    return QFileInfo(QFile::decodeName(journal)).size() > 0;
}

/// The header with nothing in it that a transaction of another program may still take back.
DatabaseHeader committedHeader(sqlite3* database) {
    const StatementHandle reading =
        prepare(database, QStringLiteral("Select 1 From sqlite_schema"));
    step(reading.get());
    return headerIn(currentHead(database)).value_or(DatabaseHeader());
}

qint64 number(sqlite3* database, const QString& query) {
    const StatementHandle statement = prepare(database, query);
    return step(statement.get()) ? sqlite3_column_int64(statement.get(), 0) : 0;
}

class SqliteFile final : public DatabaseFile {
  public:
    /// `safe` has read the schema; `copy` holds the file when it is not the one at `path`.
    SqliteFile(const QString& path, SafeHandle safe, std::unique_ptr<SqliteCopy> copy)
        : path_(QFileInfo(path).absoluteFilePath()),
          copy_(std::move(copy)),
          safe_(std::move(safe)),
          opened_(path),
          found_(opened_),
          header_(committedHeader(safe_.handle.get())),
          latestChanges_(header_.changes) {}

    sqlite3* handle() const noexcept override { return safe_.handle.get(); }
    StatementWatch& watch() noexcept override { return *safe_.watch; }
    void setLockWait(int milliseconds) override { sqlite3_busy_timeout(handle(), milliseconds); }
    void setCacheLimit(qint64 bytes) override {
        run(handle(), QStringLiteral("PRAGMA cache_size = -%1").arg(bytes / 1024));
    }
    void requireInPlace() override;
    qint64 changesOfOthers() override {
        return number(handle(), QStringLiteral("PRAGMA data_version"));
    }
    bool isInTransaction() const noexcept override { return sqlite3_get_autocommit(handle()) == 0; }
    void begin(int level) override;
    void commit(int level) override;
    void undo(int level) noexcept override;
    void beginReading() override;
    void endReading() noexcept override;
    qint64 execute(const QString& statement, const Arguments& arguments) override {
        statements_.run(handle(), statement, arguments);
        return sqlite3_changes64(handle());
    }
    qint64 lastInsertedId() const override { return sqlite3_last_insert_rowid(handle()); }
    QString lengthOf(const QString& table, const QString& column) const override {
        return QStringLiteral("length(%1.%2)").arg(quoted(table), quoted(column));
    }
    std::shared_ptr<LongBinary> field(const QString& table, const QString& column,
                                      qint32 id) override;
    std::optional<TableStructure> structure(const QString& table) override {
        return tableStructure(handle(), table);
    }
    QStringList tables() override { return tableNames(handle()); }
    QStringList damages() override;

  private:
    void requireSameDatabase(const QByteArray& head);
    [[noreturn]] void failReplaced(const QString& what) const {
        throw Error(QStringLiteral("%1: %2 while it was open").arg(path_, what),
                    Error::Cause::Replaced);
    }

    QString path_;
    std::unique_ptr<SqliteCopy> copy_;
    SafeHandle safe_;
    StatementCache statements_;
    FileAt opened_;
    FileAt found_;           ///< the last time when it was looked at
    DatabaseHeader header_;  ///< when it was opened
    quint32 latestChanges_;  ///< commits that it has had for certain
};

class SqliteBlob final : public LongBinary, private HandleUser {
  public:
    SqliteBlob(SqliteFile& file, const QString& table, const QString& column, qint32 id)
        : HandleUser(file), table_(table), column_(column) {
        const auto row = prepare(file.handle(),
                                 QStringLiteral("Select rowid, typeof(%1) From %2 Where ID = ?")
                                     .arg(quoted(column), quoted(table)),
                                 {id});
        if (!step(row.get())) {
            throw Error(QStringLiteral("%1 has no row %2").arg(table).arg(id));
        }
        row_ = sqlite3_column_int64(row.get(), 0);
        null_ = columnText(row.get(), 1) == QLatin1StringView("null");
    }

    qint64 size() override { return null_ ? 0 : sqlite3_blob_bytes(blob(Use::Read)); }

    void read(qint64 offset, std::span<char> chunk) override {
        sqlite3_blob* source = blob(Use::Read);
        check(sqlite3_blob_read(source, chunk.data(), static_cast<int>(chunk.size()),
                                static_cast<int>(offset)));
    }

    void replace(qint64 total) override {
        blob_.reset();
        allowValue(handle(), total);
        run(handle(),
            QStringLiteral("Update %1 Set %2 = zeroblob(?) Where rowid = ?")
                .arg(quoted(table_), quoted(column_)),
            {total, row_});
        null_ = false;
    }

    void write(qint64 offset, std::span<const char> chunk) override {
        sqlite3_blob* target = blob(Use::Write);
        const auto length = static_cast<int>(chunk.size());
        check(sqlite3_blob_write(target, chunk.data(), length, static_cast<int>(offset)));
        if (offset + length == sqlite3_blob_bytes(target)) {
            blob_.reset();  // nothing commits while a handle is open for writing
        }
    }

  private:
    enum class Use { Read, Write };

    void release() noexcept override { blob_.reset(); }

    // An expired handle would keep the transactions around it from committing.
    void releaseUndone() noexcept override { blob_.reset(); }

    sqlite3* handle() const {
        if (file() == nullptr) {
            throw Error(QStringLiteral("the file of the field is closed"));
        }
        return file()->handle();
    }

    void check(int result) const {
        if (result != SQLITE_OK) {
            throwLastError(handle());
        }
    }

    // The blob handle is kept between chunks: it remembers where the value's pages lie, so that
    // going through a long value takes linear time.
    sqlite3_blob* blob(Use use) {
        sqlite3* database = handle();
        if (blob_ == nullptr || (use == Use::Write && use_ == Use::Read)) {
            blob_.reset();
            sqlite3_blob* opened = nullptr;
            check(sqlite3_blob_open(database, "main", table_.toUtf8().constData(),
                                    column_.toUtf8().constData(), row_, use == Use::Write,
                                    &opened));
            blob_.reset(opened);
            use_ = use;
        }
        return blob_.get();
    }

    QString table_;
    QString column_;
    qint64 row_ = 0;
    bool null_ = false;
    Use use_ = Use::Read;
    std::unique_ptr<sqlite3_blob, BlobDeleter> blob_;
};

QString savepoint(int level) {
    return QStringLiteral("level%1").arg(level);
}

void SqliteFile::begin(int level) {
    // The write lock is taken at once: a wait for it in the middle could end in a deadlock.
    statements_.run(handle(), level == 1 ? QStringLiteral("BEGIN IMMEDIATE")
                                         : QStringLiteral("SAVEPOINT ") + savepoint(level));
}

void SqliteFile::commit(int level) {
    statements_.run(handle(), level == 1 ? QStringLiteral("COMMIT")
                                         : QStringLiteral("RELEASE ") + savepoint(level));
}

void SqliteFile::undo(int level) noexcept {
    if (isInTransaction()) {
        const QString statements =
            level == 1 ? QStringLiteral("ROLLBACK")
                       : QStringLiteral("ROLLBACK TO %1; RELEASE %1").arg(savepoint(level));
        sqlite3_exec(handle(), statements.toUtf8().constData(), nullptr, nullptr, nullptr);
    }
}

void SqliteFile::beginReading() {
    run(handle(), QStringLiteral("BEGIN"));
    try {
        // The state is that of the first read.
        run(handle(), QStringLiteral("Select 1 From sqlite_schema Limit 1"));
        run(handle(), QStringLiteral("PRAGMA query_only = ON"));
    } catch (const Error&) {
        endReading();
        throw;
    }
}

void SqliteFile::endReading() noexcept {
    sqlite3_exec(handle(), "PRAGMA query_only = OFF; COMMIT", nullptr, nullptr, nullptr);
}

std::shared_ptr<LongBinary> SqliteFile::field(const QString& table, const QString& column,
                                              qint32 id) {
    return std::make_shared<SqliteBlob>(*this, table, column, id);
}

/// Statements that check as much of the file as can be checked without evaluating what it says.
QStringList checksOf(sqlite3* database) {
    const auto whole = QStringLiteral("PRAGMA integrity_check");
    QStringList checks;
    bool isWhole = true;
    const StatementHandle tables =
        prepare(database, QStringLiteral("Select name From pragma_table_list Where schema = 'main' "
                                         "And type In ('table', 'shadow')"));
    while (step(tables.get())) {
        const QString table = columnText(tables.get(), 0);
        const auto structure = tableStructure(database, table);
        // A name that begins like a number is taken for one: of the messages that are wanted.
        const QChar first = table.isEmpty() ? QChar(u'0') : table.front();
        const bool isNumber = first == u'+' || first == u'-' || first.isDigit();
        if (structure && !structure->runsNothing) {
            isWhole = false;
        } else if (structure && !isNumber) {
            checks.append(whole + u'(' + quoted(table) + u')');
        }
    }
    return isWhole ? QStringList{whole} : checks;
}

QStringList SqliteFile::damages() {
    constexpr qsizetype kEnough = 100;
    QStringList lines;
    try {
        watch().during([&] {
            for (const QString& text : checksOf(handle())) {
                const auto check = prepare(handle(), text);
                while (lines.size() < kEnough && step(check.get())) {
                    lines.append(columnText(check.get(), 0));
                    lines.removeAll(QStringLiteral("ok"));
                }
            }
        });
    } catch (const Error& error) {
        if (error.isLocked() || watch().isUnwanted()) {
            throw;
        }
        lines.append(error.description());
    }
    return lines;
}

// SQLite reads a last page that was cut short as if zeros followed.
bool hasWholePages(sqlite3* database, qint64 size) {
    return size >= number(database, QStringLiteral("PRAGMA page_count")) *
                       number(database, QStringLiteral("PRAGMA page_size"));
}

// A file may be shorter with good reason, when it has been cleaned up.
bool isCutShort(sqlite3* database, qint64 size) {
    try {
        return size == 0 || !hasWholePages(database, size);
    } catch (const Error& error) {
        if (error.isLocked()) {
            throw;
        }
        return true;
    }
}

/// Throws Error unless the file that starts with `head` is the one that was opened, with some more
/// commits. The numbers by which it is told only grow, or stay.
void SqliteFile::requireSameDatabase(const QByteArray& head) {
    const auto isBefore = [](quint32 one, quint32 other) {
        return static_cast<qint32>(one - other) < 0;
    };
    const DatabaseHeader header = headerIn(head).value_or(DatabaseHeader());
    if (header.bytes.isEmpty() || header.mark != header_.mark ||
        header.encoding != header_.encoding ||
        isBefore(header.schemaVersion, header_.schemaVersion) ||
        isBefore(header.changes, latestChanges_)) {
        failReplaced(QStringLiteral("the content of another file has been written into the file"));
    }
    if (header.writesAhead) {
        failReplaced(QStringLiteral("the file has been given a write-ahead log"));
    }
    if (header.changes == latestChanges_ && !isInTransaction()) {
        // What SQLite remembers of the file it keeps as long as this number stays. A transaction
        // that is larger than its cache writes before it commits, and nobody else does meanwhile.
        sqlite3_db_release_memory(handle());
    }
    if (header.changes != latestChanges_ && !hasJournal(handle())) {
        latestChanges_ = header.changes;
    }
}

void SqliteFile::requireInPlace() {
    if (copy_ != nullptr) {
        return;
    }
    const FileAt found(path_);
    if (found.isGone) {
        failReplaced(QStringLiteral("the file has been deleted or renamed"));
    }
    if (!found.isKnown || !opened_.isKnown) {
        return;
    }
    if (!found.isSameAs(opened_)) {
        failReplaced(QStringLiteral("another file has been put in the place of the file"));
    }
    if (found.isUnchangedSince(found_)) {
        return;
    }
    const qint64 size = found.state.st_size;
    if (const QByteArray head = currentHead(handle()); !head.isEmpty()) {
        requireSameDatabase(head);
    }
    if (size < found_.state.st_size && isCutShort(handle(), size)) {
        failReplaced(QStringLiteral("the file has been cut short"));
    }
    if (size != found_.state.st_size) {
        watch().setFileSize(size);
        allowValuesOfFile(handle(), size);
    }
    found_ = found;
}

enum class Content { None, Database, UnfinishedTransaction };

/// Reads what `database` has opened as far as to its structure.
Content contentOf(const SafeHandle& safe, const QString& path) {
    sqlite3* database = safe.handle.get();
    const int read = safe.watch->readSchema();
    if (read == SQLITE_NOTADB) {
        return Content::None;
    }
    if (sqlite3_extended_errcode(database) == SQLITE_READONLY_ROLLBACK) {
        return Content::UnfinishedTransaction;
    }
    requireRead(database, read);
    if (number(database, QStringLiteral("PRAGMA page_count")) == 0) {
        return Content::None;  // less than a page, which SQLite takes for one without tables
    }
    if (!hasWholePages(database, QFileInfo(path).size())) {
        throw Error(QStringLiteral("%1: the file has been cut short").arg(path));
    }
    return Content::Database;
}

/// A copy of the database at `path`, recovered, open for reading; null when it is no database.
std::unique_ptr<SqliteFile> recoveredCopy(const QString& path, const DatabaseHeader& header,
                                          Access access) {
    auto copy = std::make_unique<SqliteCopy>(path, header, access);
    try {
        if (contentOf(openSafely(copy->path(), header, Access::Write), copy->path()) !=
            Content::Database) {
            return nullptr;
        }
        SafeHandle safe = openSafely(copy->path(), *databaseHeader(copy->path()), Access::Read);
        return std::make_unique<SqliteFile>(path, std::move(safe), std::move(copy));
    } catch (const Error& error) {  // about a file that nobody else knows
        throw Error(QString(error.description()).replace(copy->path(), path), error.cause());
    }
}

}  // namespace

bool isSqliteFile(const QString& path) {
    return databaseHeader(path).has_value();
}

std::unique_ptr<DatabaseFile> SqliteDriver::open(const QString& path, Access access) const {
    const auto header = databaseHeader(path);
    if (!header) {
        return nullptr;
    }
    Content content = Content::UnfinishedTransaction;
    std::unique_ptr<SqliteFile> file;
    if (access == Access::Write || !header->writesAhead) {
        SafeHandle safe = openSafely(path, *header, access);
        content = contentOf(safe, path);
        if (content == Content::Database) {
            file = std::make_unique<SqliteFile>(path, std::move(safe), nullptr);
        }
    }
    if (content == Content::UnfinishedTransaction) {
        if (access == Access::Write) {
            throw Error(QStringLiteral("%1: the last transaction cannot be taken back in a "
                                       "write-protected file")
                            .arg(path),
                        Error::Cause::NeedsRecovery);
        }
        file = recoveredCopy(path, *header, access);
    }
    return file;
}

}  // namespace varo::data
