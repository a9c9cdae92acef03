#include "platform/data/access/access_file.h"

#include "platform/data/access/access_field.h"
#include "platform/data/access/index_tree.h"
#include "platform/data/access/page_check.h"
#include "platform/data/access/reading.h"
#include "platform/data/access/value.h"
#include "platform/data/identifiers.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>

namespace varo::access {

namespace {

using data::ColumnKind;
using data::ColumnType;
using data::Error;
using data::TableStructure;

std::vector<SeenTable> readTables(PageFile& file) {
    std::vector<SeenTable> tables;
    for (CatalogEntry& entry : userTables(file)) {
        SeenTable seen;
        seen.entry = std::move(entry);
        try {
            seen.definition = readTable(file, seen.entry.page);
        } catch (const Error& error) {
            seen.damage = error.description();
        }
        tables.push_back(std::move(seen));
    }
    return tables;
}

data::DatabaseHandle inMemory(const data::TemporaryFileLayer& layer) {
    sqlite3* opened = nullptr;
    const int result = layer.open(":memory:", &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
    data::DatabaseHandle handle(opened);
    if (result != SQLITE_OK) {
        throw Error(QString::fromUtf8(sqlite3_errstr(result)));
    }
    return handle;
}

/// A table that is made or removed would be one in memory, and so would a transaction.
int refuseWhatIsInMemory(void*, int action, const char*, const char*, const char*, const char*) {
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
        case SQLITE_TRANSACTION:
        case SQLITE_SAVEPOINT:
            return SQLITE_DENY;
        default:
            return SQLITE_OK;
    }
}

bool isSame(const SeenTable& one, const SeenTable& other) {
    return one.entry == other.entry && isSameTable(one.definition, other.definition);
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

}  // namespace

AccessFile::AccessFile(const QString& path, const Header& header, data::Access access)
    : path_(QFileInfo(path).absoluteFilePath()),
      pages_(path_, header, access),
      tables_{pages_, {}},
      handle_(inMemory(layer_)) {
    ::stat(QFile::encodeName(path_).constData(), &opened_);
    watch_ = std::make_unique<data::StatementWatch>(handle(), pages_.layout().pageSize);
    watch_->setFileSize(opened_.st_size);
    pages_.setPageNotice([this] { takePage(); });
    const Reading reading(pages_);
    tables_.tables = readTables(pages_);
    state_ = pages_.stateNumber();
    showTables(handle(), tables_);
    sqlite3_limit(handle(), SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_set_authorizer(handle(), refuseWhatIsInMemory, nullptr);
}

/// What is written, and what is checked, takes pages again and again by right.
void AccessFile::takePage() {
    if (tables_.isChanging || isChecking_) {
        watch_->requireWanted();
    } else {
        watch_->takePage();
    }
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
    const Reading reading(pages_);
    requireSameTables();
}

/// Throws Error when another program has changed what tables there are, or how they are kept.
void AccessFile::requireSameTables() {
    if (state_ == pages_.stateNumber()) {
        return;
    }
    bool isEqual = false;
    try {
        const std::vector<SeenTable> found = readTables(pages_);
        isEqual = std::equal(found.begin(), found.end(), tables_.tables.begin(),
                             tables_.tables.end(), isSame);
    } catch (const Error& error) {
        if (error.isLocked() || error.isInterrupted()) {
            throw;
        }
    }
    if (!isEqual) {
        throw Error(QStringLiteral("%1: another program has changed the tables of the file while "
                                   "it was open")
                        .arg(path_),
                    Error::Cause::Replaced);
    }
    for (SeenTable& table : tables_.tables) {
        table.changer.reset();  // the rules of the table may be others
    }
    watch_->setFileSize(qint64{pages_.pageCount()} * pages_.layout().pageSize);
    state_ = pages_.stateNumber();
}

void AccessFile::begin(int level) {
    if (isReading_) {
        throw Error(QStringLiteral("the file is only being read"));
    }
    if (level > 1) {
        savepoints_.push_back(pages_.setSavepoint());
        return;
    }
    pages_.begin();
    try {
        requireSameTables();
    } catch (...) {
        pages_.undo();
        throw;
    }
    savepoints_.clear();
}

void AccessFile::commit(int level) {
    if (level == 1) {
        pages_.commit();
        watch_->setFileSize(qint64{pages_.pageCount()} * pages_.layout().pageSize);
        return;
    }
    pages_.releaseSavepoint(savepoints_.back());
    savepoints_.pop_back();
}

void AccessFile::undo(int level) noexcept {
    if (!pages_.isWriting()) {
        return;
    }
    if (level == 1) {
        pages_.undo();
        return;
    }
    pages_.undoTo(savepoints_.back());
    pages_.releaseSavepoint(savepoints_.back());
    savepoints_.pop_back();
}

void AccessFile::beginReading() {
    if (isInTransaction()) {
        throw Error(QStringLiteral("the file is being written or read already"));
    }
    pages_.beginReading();
    isReading_ = true;
    try {
        requireSameTables();
    } catch (...) {
        endReading();
        throw;
    }
}

void AccessFile::endReading() noexcept {
    isReading_ = false;
    pages_.endReading();
}

qint64 AccessFile::execute(const QString& statement, const data::Arguments& arguments) {
    const int level = pages_.isWriting() ? static_cast<int>(savepoints_.size()) + 2 : 1;
    begin(level);
    try {
        statements_.run(handle(), statement, arguments);
        commit(level);
    } catch (...) {
        undo(level);
        throw;
    }
    return sqlite3_changes64(handle());
}

SeenTable* AccessFile::table(const QString& name) {
    const auto found =
        std::find_if(tables_.tables.begin(), tables_.tables.end(), [&](const SeenTable& each) {
            return each.entry.name.compare(name, Qt::CaseInsensitive) == 0;
        });
    return found == tables_.tables.end() ? nullptr : &*found;
}

QString AccessFile::lengthOf(const QString& table, const QString& column) const {
    return data::quoted(table) + u'.' + data::quoted(lengthColumn(column));
}

std::shared_ptr<data::LongBinary> AccessFile::field(const QString& name, const QString& column,
                                                    qint32 id) {
    SeenTable* seen = table(name);
    const int position = seen == nullptr ? -1 : seen->definition.column(column);
    if (position < 0) {
        throw Error(QStringLiteral("%1 has no column %2").arg(name, column));
    }
    return std::make_shared<AccessField>(*this, *seen, static_cast<std::size_t>(position), id);
}

void AccessFile::setField(SeenTable& table, std::size_t column, RowPlace place,
                          const LongField& field) {
    std::vector<FieldChange> changes(table.definition.columns.size(), Kept{});
    changes.at(column) = field;
    TableWriter& writer = tables_.writerOf(table);
    const ChangingRows changing(tables_);
    writer.update(place, changes);
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
    for (const SeenTable& table : tables_.tables) {
        names.append(table.entry.name);
    }
    return names;
}

QStringList AccessFile::damagesOf(const SeenTable& table) {
    const TableDefinition& definition = table.definition;
    if (!table.damage.isEmpty()) {
        return {table.damage};
    }
    QStringList found;
    const auto note = [&](const auto& check) {
        try {
            check();
        } catch (const Error& error) {
            if (error.isLocked() || error.isInterrupted()) {
                throw;
            }
            found.append(error.description());
        }
    };
    note([&] {
        RowScan rows(pages_, definition);
        while (const auto each = rows.next()) {
            const Row row(pages_.layout(), definition, each->page, each->bytes);
            for (const Column& column : definition.columns) {
                fieldValue(pages_, row, column);
            }
        }
    });
    isChecking_ = true;
    const auto ending = qScopeGuard([this] { isChecking_ = false; });
    for (const Index& index : definition.indexes) {
        note([&] {
            for (const QString& finding : checkIndexRows(pages_, definition, index)) {
                found.append(QStringLiteral("index %1: %2").arg(index.names.value(0), finding));
            }
        });
    }
    return found;
}

QStringList AccessFile::checkedPages() {
    isChecking_ = true;
    const auto ending = qScopeGuard([this] { isChecking_ = false; });
    return checkPages(pages_);
}

QStringList AccessFile::damages() {
    constexpr qsizetype kEnough = 100;
    const Reading reading(pages_);
    QStringList lines = checkedPages();
    for (const SeenTable& table : tables_.tables) {
        for (const QString& finding : damagesOf(table)) {
            if (lines.size() < kEnough) {
                lines.append(QStringLiteral("%1: %2").arg(table.entry.name, finding));
            }
        }
    }
    return lines;
}

}  // namespace varo::access
