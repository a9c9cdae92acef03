#include "platform/data/access/access_driver.h"

#include "platform/data/access/long_value.h"
#include "platform/data/access/value.h"
#include "platform/data/access/virtual_table.h"
#include "platform/data/file_start.h"
#include "platform/data/identifiers.h"
#include "platform/data/sqlite_handle.h"
#include "platform/data/statement.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>
#include <sys/stat.h>

namespace varo::access {

namespace {

using data::ColumnKind;
using data::ColumnType;
using data::Error;
using data::TableStructure;

[[noreturn]] void throwReadOnly() {
    throw Error(QStringLiteral("an Access file can only be read"));
}

class AccessFile final : public data::DatabaseFile {
  public:
    AccessFile(const QString& path, const Header& header, data::Access access);

    sqlite3* handle() const noexcept override { return handle_.get(); }
    data::StatementWatch& watch() noexcept override { return *watch_; }
    void requireInPlace() override;
    std::shared_ptr<data::LongBinary> field(const QString& table, const QString& column,
                                            qint32 id) override;
    std::optional<TableStructure> structure(const QString& table) override;
    QStringList tables() override;
    QStringList damages() override;

    PageFile& pages() { return pages_; }
    const SeenTable* table(const QString& name) const;

  private:
    QString path_;
    PageFile pages_;
    std::vector<SeenTable> tables_;
    struct stat opened_ {};
    std::unique_ptr<data::StatementWatch> watch_;
    data::DatabaseHandle handle_;  // behind the others, which outlive it
};

class AccessField final : public data::LongBinary, private data::HandleUser {
  public:
    AccessField(AccessFile& file, const SeenTable& table, const Column& column, qint32 id);

    qint64 size() override { return value().size(); }
    void read(qint64 offset, std::span<char> chunk) override {
        const QByteArray& bytes = value();
        const auto length = static_cast<qsizetype>(chunk.size());
        if (offset < 0 || offset > bytes.size() || length > bytes.size() - offset) {
            throw Error(QStringLiteral("the field holds fewer bytes"));
        }
        std::memcpy(chunk.data(), bytes.constData() + offset, chunk.size());
    }
    void replace(qint64) override { throwReadOnly(); }
    void write(qint64, std::span<const char>) override { throwReadOnly(); }

  private:
    void release() noexcept override { value_.clear(); }

    const QByteArray& value() const {
        if (file() == nullptr) {
            throw Error(QStringLiteral("the file of the field is closed"));
        }
        return value_;
    }

    QByteArray value_;
};

/// Keeps a file from being written while it is read.
class Reading {
  public:
    explicit Reading(PageFile& file) : file_(file) { file_.beginReading(); }
    ~Reading() { file_.endReading(); }
    Q_DISABLE_COPY_MOVE(Reading)

  private:
    PageFile& file_;
};

AccessField::AccessField(AccessFile& file, const SeenTable& table, const Column& column, qint32 id)
    : HandleUser(file) {
    const auto found =
        data::prepare(file.handle(),
                      QStringLiteral("Select %1 From %2 Where ID = ?")
                          .arg(data::quoted(column.name), data::quoted(table.entry.name)),
                      {id});
    if (!data::step(found.get())) {
        throw Error(QStringLiteral("%1 has no row %2").arg(table.entry.name).arg(id));
    }
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(found.get(), 0));
    value_ = QByteArray(bytes, sqlite3_column_bytes(found.get(), 0));
}

std::vector<SeenTable> readTables(PageFile& file) {
    std::vector<SeenTable> tables;
    for (CatalogEntry& entry : userTables(file)) {
        SeenTable seen{std::move(entry), {}, {}};
        try {
            seen.definition = readTable(file, seen.entry.page);
        } catch (const Error& error) {
            seen.damage = error.description();
        }
        tables.push_back(std::move(seen));
    }
    return tables;
}

data::DatabaseHandle inMemory() {
    sqlite3* opened = nullptr;
    const int result =
        sqlite3_open_v2(":memory:", &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    data::DatabaseHandle handle(opened);
    if (result != SQLITE_OK) {
        throw Error(QString::fromUtf8(sqlite3_errstr(result)));
    }
    return handle;
}

/// A table that is made or removed would be one in memory.
int refuseOtherTables(void*, int action, const char*, const char*, const char*, const char*) {
    switch (action) {
        case SQLITE_CREATE_INDEX:
        case SQLITE_CREATE_TABLE:
        case SQLITE_CREATE_TRIGGER:
        case SQLITE_CREATE_VIEW:
        case SQLITE_CREATE_VTABLE:
        case SQLITE_DROP_TABLE:
        case SQLITE_DROP_VTABLE:
        case SQLITE_ALTER_TABLE:
        case SQLITE_ATTACH:
            return SQLITE_DENY;
        default:
            return SQLITE_OK;
    }
}

AccessFile::AccessFile(const QString& path, const Header& header, data::Access access)
    : path_(QFileInfo(path).absoluteFilePath()),
      pages_(path_, header, access),
      handle_(inMemory()) {
    ::stat(QFile::encodeName(path_).constData(), &opened_);
    const Reading reading(pages_);
    tables_ = readTables(pages_);
    watch_ = std::make_unique<data::StatementWatch>(handle(), pages_.layout().pageSize);
    watch_->setFileSize(opened_.st_size);
    showTables(handle(), pages_, tables_);
    sqlite3_limit(handle(), SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_set_authorizer(handle(), refuseOtherTables, nullptr);
}

void AccessFile::requireInPlace() {
    struct stat found {};
    if (::stat(QFile::encodeName(path_).constData(), &found) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            throw Error(QStringLiteral("%1: the file has been deleted").arg(path_),
                        Error::Cause::Replaced);
        }
        return;
    }
    if (found.st_dev != opened_.st_dev || found.st_ino != opened_.st_ino) {
        throw Error(
            QStringLiteral("%1: another file has been put in the place of the file").arg(path_),
            Error::Cause::Replaced);
    }
}

const SeenTable* AccessFile::table(const QString& name) const {
    const auto found = std::find_if(tables_.begin(), tables_.end(), [&](const SeenTable& table) {
        return table.entry.name.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == tables_.end() ? nullptr : &*found;
}

std::shared_ptr<data::LongBinary> AccessFile::field(const QString& table, const QString& column,
                                                    qint32 id) {
    const SeenTable* seen = this->table(table);
    const int position = seen == nullptr ? -1 : seen->definition.column(column);
    if (position < 0) {
        throw Error(QStringLiteral("%1 has no column %2").arg(table, column));
    }
    return std::make_shared<AccessField>(
        *this, *seen, seen->definition.columns[static_cast<std::size_t>(position)], id);
}

std::pair<ColumnKind, ColumnType> typeOf(FieldType type) {
    switch (type) {
        case FieldType::YesNo:
            return {ColumnKind::Number, ColumnType::YesNo};
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
        case FieldType::BigInteger:
            return {ColumnKind::Number, ColumnType::Integer};
        case FieldType::Money:
            return {ColumnKind::Number, ColumnType::Money};
        case FieldType::Single:
        case FieldType::Double:
            return {ColumnKind::Number, ColumnType::Floating};
        case FieldType::Decimal:
            return {ColumnKind::Number, ColumnType::Decimal};
        case FieldType::Date:
        case FieldType::ExtendedDate:
            return {ColumnKind::Any, ColumnType::Date};
        case FieldType::Guid:
            return {ColumnKind::Any, ColumnType::Guid};
        case FieldType::Text:
        case FieldType::Memo:
            return {ColumnKind::Text, ColumnType::Text};
        case FieldType::Binary:
        case FieldType::Ole:
            return {ColumnKind::Any, ColumnType::Binary};
        default:
            return {ColumnKind::Any, ColumnType::Any};
    }
}

std::optional<TableStructure> AccessFile::structure(const QString& name) {
    const SeenTable* seen = table(name);
    if (seen == nullptr) {
        return std::nullopt;
    }
    if (!seen->damage.isEmpty()) {
        throw Error(QStringLiteral("%1: %2").arg(name, seen->damage));
    }
    TableStructure structure;
    for (const char* each : {"rowid", "_rowid_", "oid"}) {
        const QString number = QString::fromLatin1(each);
        if (structure.rowNumber.isEmpty() && seen->definition.column(number) < 0) {
            structure.rowNumber = number;
        }
    }
    for (const Column& column : seen->definition.columns) {
        const auto [kind, type] = typeOf(column.type);
        structure.columns.append({column.name, kind, type});
        if (column.isAutoNumber && column.type == FieldType::Long) {
            structure.autoNumber = column.name;
        }
    }
    return structure;
}

QStringList AccessFile::tables() {
    QStringList names;
    for (const SeenTable& table : tables_) {
        names.append(table.entry.name);
    }
    return names;
}

QStringList AccessFile::damages() {
    constexpr qsizetype kEnough = 100;
    QStringList lines;
    const Reading reading(pages_);
    for (const SeenTable& table : tables_) {
        const auto complain = [&](const QString& what) {
            if (lines.size() < kEnough) {
                lines.append(QStringLiteral("%1: %2").arg(table.entry.name, what));
            }
        };
        if (!table.damage.isEmpty()) {
            complain(table.damage);
            continue;
        }
        try {
            RowScan rows(pages_, table.definition);
            while (const auto found = rows.next()) {
                const Row row(pages_.layout(), table.definition, found->page, found->bytes);
                for (const Column& column : table.definition.columns) {
                    fieldValue(pages_, row, column);
                }
            }
        } catch (const Error& error) {
            if (error.isLocked()) {
                throw;
            }
            complain(error.description());
        }
    }
    return lines;
}

}  // namespace

std::unique_ptr<data::DatabaseFile> AccessDriver::open(const QString& path,
                                                       data::Access access) const {
    const auto header = readHeader(data::fileStart(path, kHeaderLength));
    if (!header) {
        return nullptr;
    }
    if (header->isEncoded || header->hasPassword) {
        throw Error(
            QStringLiteral("%1: the Access file is %2")
                .arg(path, header->isEncoded
                               ? QStringLiteral("encoded or encrypted, which cannot be read")
                               : QStringLiteral("protected with a password")));
    }
    return std::make_unique<AccessFile>(path, *header, access);
}

}  // namespace varo::access
