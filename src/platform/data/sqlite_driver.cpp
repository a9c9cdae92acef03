#include "platform/data/sqlite_driver.h"

#include "platform/data/file_start.h"
#include "platform/data/statement.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace varo::data {

namespace {

struct HandleDeleter {
    void operator()(sqlite3* handle) const noexcept { sqlite3_close_v2(handle); }
};
using Handle = std::unique_ptr<sqlite3, HandleDeleter>;

struct BlobDeleter {
    void operator()(sqlite3_blob* blob) const noexcept { sqlite3_blob_close(blob); }
};

class SqliteFile final : public DatabaseFile {
  public:
    explicit SqliteFile(Handle handle) : handle_(std::move(handle)) {}

    sqlite3* handle() const noexcept override { return handle_.get(); }
    std::shared_ptr<LongBinary> field(const QString& table, const QString& column,
                                      qint32 id) override;
    std::optional<TableStructure> structure(const QString& table) override;
    QStringList tables() override;
    QStringList damages() override;

  private:
    QString rowNumberOf(const QString& table, const TableStructure& structure) const;

    Handle handle_;
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

    qint64 size() override { return null_ ? 0 : sqlite3_blob_bytes(blob(Access::Read)); }

    void read(qint64 offset, std::span<char> chunk) override {
        sqlite3_blob* source = blob(Access::Read);
        check(sqlite3_blob_read(source, chunk.data(), static_cast<int>(chunk.size()),
                                static_cast<int>(offset)));
    }

    void replace(qint64 total) override {
        blob_.reset();
        run(handle(),
            QStringLiteral("Update %1 Set %2 = zeroblob(?) Where rowid = ?")
                .arg(quoted(table_), quoted(column_)),
            {total, row_});
        null_ = false;
    }

    void write(qint64 offset, std::span<const char> chunk) override {
        sqlite3_blob* target = blob(Access::Write);
        const auto length = static_cast<int>(chunk.size());
        check(sqlite3_blob_write(target, chunk.data(), length, static_cast<int>(offset)));
        if (offset + length == sqlite3_blob_bytes(target)) {
            blob_.reset();  // nothing commits while a handle is open for writing
        }
    }

  private:
    enum class Access { Read, Write };

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
    sqlite3_blob* blob(Access access) {
        sqlite3* database = handle();
        if (blob_ == nullptr || (access == Access::Write && access_ == Access::Read)) {
            blob_.reset();
            sqlite3_blob* opened = nullptr;
            check(sqlite3_blob_open(database, "main", table_.toUtf8().constData(),
                                    column_.toUtf8().constData(), row_, access == Access::Write,
                                    &opened));
            blob_.reset(opened);
            access_ = access;
        }
        return blob_.get();
    }

    QString table_;
    QString column_;
    qint64 row_ = 0;
    bool null_ = false;
    Access access_ = Access::Read;
    std::unique_ptr<sqlite3_blob, BlobDeleter> blob_;
};

std::shared_ptr<LongBinary> SqliteFile::field(const QString& table, const QString& column,
                                              qint32 id) {
    return std::make_shared<SqliteBlob>(*this, table, column, id);
}

// How SQLite derives what a column converts from the type that it was declared with.
ColumnKind kindOf(QByteArray declaredType) {
    declaredType = declaredType.toUpper();
    const auto hasPart = [&](const char* part) { return declaredType.contains(part); };
    if (hasPart("INT")) {
        return ColumnKind::Number;
    }
    if (hasPart("CHAR") || hasPart("CLOB") || hasPart("TEXT")) {
        return ColumnKind::Text;
    }
    return declaredType.isEmpty() || hasPart("BLOB") ? ColumnKind::Any : ColumnKind::Number;
}

// What a column holds by the words in its declared type, in the spelling of this database and of
// those that tables come from; the first that is found decides.
ColumnType typeOf(QByteArray declaredType) {
    static constexpr struct {
        const char* part;
        ColumnType type;
    } kParts[] = {
        {"BOOL", ColumnType::YesNo},
        {"YESNO", ColumnType::YesNo},
        {"LOGICAL", ColumnType::YesNo},
        {"BIT", ColumnType::YesNo},
        {"GUID", ColumnType::Guid},
        {"UUID", ColumnType::Guid},
        {"UNIQUEIDENTIFIER", ColumnType::Guid},
        {"BLOB", ColumnType::Binary},
        {"BINARY", ColumnType::Binary},
        {"IMAGE", ColumnType::Binary},
        {"OLE", ColumnType::Binary},
        {"DATE", ColumnType::Date},
        {"TIME", ColumnType::Date},
        {"MONEY", ColumnType::Money},
        {"CURRENCY", ColumnType::Money},
        {"CHAR", ColumnType::Text},
        {"CLOB", ColumnType::Text},
        {"TEXT", ColumnType::Text},
        {"MEMO", ColumnType::Text},
        {"NOTE", ColumnType::Text},
        {"STRING", ColumnType::Text},
        {"INT", ColumnType::Integer},
        {"COUNTER", ColumnType::Integer},
        {"AUTONUMBER", ColumnType::Integer},
        {"BYTE", ColumnType::Integer},
        {"SHORT", ColumnType::Integer},
        {"LONG", ColumnType::Integer},
        {"DEC", ColumnType::Decimal},
        {"NUM", ColumnType::Decimal},
        {"REAL", ColumnType::Floating},
        {"FLOA", ColumnType::Floating},
        {"DOUB", ColumnType::Floating},
        {"SINGLE", ColumnType::Floating},
    };
    declaredType = declaredType.toUpper();
    const auto found = std::ranges::find_if(
        kParts, [&](const auto& each) { return declaredType.contains(each.part); });
    return found == std::end(kParts) ? ColumnType::Any : found->type;
}

// Whether the statement that created a table has a constraint by which a row that breaks it is left
// out, or another row is deleted, without an error.
bool dropsRows(const QString& creation) {
    static const QString blank = QStringLiteral(R"((?:\s|--.*\n|/\*[\s\S]*?\*/)+)");
    static const QRegularExpression clause(
        QStringLiteral(R"(\bON%1CONFLICT%1(?:REPLACE|IGNORE)\b)").arg(blank),
        QRegularExpression::CaseInsensitiveOption);
    return creation.contains(clause);
}

std::optional<TableStructure> SqliteFile::structure(const QString& table) {
    TableStructure found;
    bool exists = false;
    const StatementHandle parts =
        prepare(handle(),
                QStringLiteral("Select type,rootpage,sql From sqlite_schema "
                               "Where tbl_name = ? Collate NoCase"),
                {table});
    while (step(parts.get())) {
        const QString type = columnText(parts.get(), 0);
        if (type == QLatin1StringView("trigger")) {
            found.changesAsTold = false;
        } else if (type != QLatin1StringView("index")) {
            exists = true;
            const bool isStoredTable = sqlite3_column_int64(parts.get(), 1) > 0;
            found.changesAsTold =
                found.changesAsTold && isStoredTable && !dropsRows(columnText(parts.get(), 2));
        }
    }
    if (!exists) {
        return std::nullopt;
    }
    const StatementHandle row = prepare(handle(), QStringLiteral("Select * From ") + quoted(table));
    for (int column = 0; column < sqlite3_column_count(row.get()); ++column) {
        const QByteArray declaredType = sqlite3_column_decltype(row.get(), column);
        found.columns.append(
            {columnName(row.get(), column), kindOf(declaredType), typeOf(declaredType)});
        int isAutoNumber = 0;
        sqlite3_table_column_metadata(handle(), "main", table.toUtf8().constData(),
                                      sqlite3_column_name(row.get(), column), nullptr, nullptr,
                                      nullptr, nullptr, &isAutoNumber);
        if (isAutoNumber != 0) {
            found.autoNumber = found.columns.last().name;
        }
    }
    found.rowNumber = rowNumberOf(table, found);
    return found;
}

QString SqliteFile::rowNumberOf(const QString& table, const TableStructure& structure) const {
    for (const char* each : {"rowid", "_rowid_", "oid"}) {
        const QString name = QString::fromLatin1(each);
        const bool isColumn =
            std::ranges::any_of(structure.columns, [&](const TableStructure::Column& column) {
                return column.name.compare(name, Qt::CaseInsensitive) == 0;
            });
        const QString query = QStringLiteral("Select %1 From %2").arg(name, quoted(table));
        sqlite3_stmt* compiled = nullptr;
        // It does not compile for a table that was made without row numbers.
        if (!isColumn && sqlite3_prepare_v2(handle(), query.toUtf8().constData(), -1, &compiled,
                                            nullptr) == SQLITE_OK) {
            sqlite3_finalize(compiled);
            return name;
        }
    }
    return {};
}

QStringList SqliteFile::tables() {
    QStringList names;
    const StatementHandle rows =
        prepare(handle(), QStringLiteral("Select parts.name From sqlite_schema As parts "
                                         "Join pragma_table_list As kinds "
                                         "On kinds.name = parts.name And kinds.schema = 'main' "
                                         "Where parts.type = 'table' And kinds.type = 'table' "
                                         "And parts.name Not Like 'sqlite\\_%' Escape '\\' "
                                         "Order By parts.rowid"));
    while (step(rows.get())) {
        names.append(columnText(rows.get(), 0));
    }
    return names;
}

QStringList SqliteFile::damages() {
    QStringList lines;
    const StatementHandle check = prepare(handle(), QStringLiteral("PRAGMA integrity_check"));
    while (step(check.get())) {
        lines.append(columnText(check.get(), 0));
    }
    lines.removeAll(QStringLiteral("ok"));
    return lines;
}

// A library may come from anywhere: what is stored in its schema gets no more rights than needed.
void distrustContent(sqlite3* database) {
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
}

qint64 number(sqlite3* database, const QString& query) {
    const StatementHandle statement = prepare(database, query);
    return step(statement.get()) ? sqlite3_column_int64(statement.get(), 0) : 0;
}

QString textValue(sqlite3* database, const QString& query) {
    const StatementHandle statement = prepare(database, query);
    return step(statement.get()) ? columnText(statement.get(), 0) : QString();
}

// SQLite reads a last page that was cut short as if zeros followed. Behind a write-ahead log the
// file may be shorter with good reason.
void requireWholePages(sqlite3* database, const QString& path) {
    if (textValue(database, QStringLiteral("PRAGMA journal_mode")) == QLatin1StringView("wal")) {
        return;
    }
    const qint64 expected = number(database, QStringLiteral("PRAGMA page_count")) *
                            number(database, QStringLiteral("PRAGMA page_size"));
    if (QFileInfo(path).size() < expected) {
        throw Error(QStringLiteral("%1: the file has been cut short").arg(path));
    }
}

}  // namespace

bool isSqliteFile(const QString& path) {
    const QByteArray kSignature("SQLite format 3", 16);
    return fileStart(path, static_cast<int>(kSignature.size())) == kSignature;
}

std::unique_ptr<DatabaseFile> SqliteDriver::open(const QString& path) const {
    if (!isSqliteFile(path)) {
        return nullptr;
    }
    sqlite3* opened = nullptr;
    const int result =
        sqlite3_open_v2(QFileInfo(path).absoluteFilePath().toUtf8().constData(), &opened,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    Handle handle(opened);
    if (result != SQLITE_OK) {
        throw Error(QStringLiteral("%1: %2").arg(path, QString::fromUtf8(sqlite3_errstr(result))));
    }
    sqlite3_busy_timeout(opened, kLockTimeout);
    distrustContent(opened);
    const int read =
        sqlite3_exec(opened, "Select count(*) From sqlite_schema", nullptr, nullptr, nullptr);
    if (read == SQLITE_NOTADB) {
        return nullptr;
    }
    if (read != SQLITE_OK) {
        throwLastError(opened);
    }
    if (number(opened, QStringLiteral("PRAGMA page_count")) == 0) {
        return nullptr;  // less than a page, which SQLite takes for a database without tables
    }
    requireWholePages(opened, path);
    return std::make_unique<SqliteFile>(std::move(handle));
}

}  // namespace varo::data
