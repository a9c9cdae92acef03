#include "platform/data/access/virtual_table.h"

#include "platform/data/access/long_value.h"
#include "platform/data/access/table_cursor.h"
#include "platform/data/access/table_plan.h"
#include "platform/data/access/value.h"
#include "platform/data/identifiers.h"
#include "platform/data/statement.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr char kModule[] = "access_table";

struct Table : sqlite3_vtab {
    SeenTables* all;
    SeenTable* seen;
    std::vector<std::size_t> lengths;  ///< the columns whose lengths follow the columns

    const TableDefinition& definition() const { return seen->definition; }

    int fail(const data::Error& error) {
        sqlite3_free(zErrMsg);
        zErrMsg = sqlite3_mprintf("%s: %s", seen->entry.name.toUtf8().constData(), error.what());
        return error.isLocked()        ? SQLITE_BUSY
               : error.isInterrupted() ? SQLITE_INTERRUPT
                                       : SQLITE_ERROR;
    }
};

struct Cursor : sqlite3_vtab_cursor {
    explicit Cursor(Table& table)
        : sqlite3_vtab_cursor{&table}, rows(table.all->file, table.definition()) {}

    TableCursor rows;
};

bool isLong(const Column& column) {
    return column.type == FieldType::Memo || column.type == FieldType::Ole;
}

const char* declaredType(FieldType type) {
    switch (type) {
        case FieldType::YesNo:
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
        case FieldType::BigInteger:
            return "INTEGER";
        case FieldType::Single:
        case FieldType::Double:
            return "REAL";
        case FieldType::Money:
        case FieldType::Decimal:
            return "NUMERIC";
        case FieldType::Binary:
        case FieldType::Ole:
        case FieldType::Complex:
            return "BLOB";
        default:
            return "TEXT COLLATE NOCASE";
    }
}

QString declaration(Table& table) {
    QStringList columns;
    const auto& all = table.definition().columns;
    for (const Column& column : all) {
        columns.append(data::quoted(column.name) + u' ' +
                       QLatin1StringView(declaredType(column.type)));
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (isLong(all[i])) {
            columns.append(data::quoted(lengthColumn(all[i].name)) +
                           QStringLiteral(" INTEGER HIDDEN"));
            table.lengths.push_back(i);
        }
    }
    if (columns.isEmpty()) {
        columns.append(QStringLiteral("damaged HIDDEN"));
    }
    return QStringLiteral("CREATE TABLE x(%1)").arg(columns.join(u','));
}

void give(sqlite3_context* context, const Value& value) {
    if (const auto* integer = std::get_if<qint64>(&value)) {
        sqlite3_result_int64(context, *integer);
    } else if (const auto* real = std::get_if<double>(&value)) {
        sqlite3_result_double(context, *real);
    } else if (const auto* text = std::get_if<Text>(&value)) {
        sqlite3_result_text64(context, text->utf8.constData(),
                              static_cast<sqlite3_uint64>(text->utf8.size()), SQLITE_TRANSIENT,
                              SQLITE_UTF8);
    } else if (const auto* binary = std::get_if<QByteArray>(&value)) {
        sqlite3_result_blob64(context, binary->constData(),
                              static_cast<sqlite3_uint64>(binary->size()), SQLITE_TRANSIENT);
    }
}

void giveField(const Table& table, const Row& row, sqlite3_context* context, std::size_t column) {
    const auto& columns = table.definition().columns;
    if (column < columns.size()) {
        give(context, fieldValue(table.all->file, row, columns[column]));
        return;
    }
    const auto field = row.field(columns.at(table.lengths.at(column - columns.size())));
    if (field && !field->isEmpty()) {
        sqlite3_result_int64(context, longValueSize(*field));
    }
}

Value valueOf(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_INTEGER:
            return qint64{sqlite3_value_int64(value)};
        case SQLITE_FLOAT:
            return sqlite3_value_double(value);
        case SQLITE_TEXT: {
            const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
            return Text{QByteArray(text, sqlite3_value_bytes(value))};
        }
        case SQLITE_BLOB: {
            const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
            return QByteArray(bytes, sqlite3_value_bytes(value));
        }
        default:
            return {};
    }
}

/// What a statement says of the fields of a row: the values of all columns, in their order.
std::vector<FieldChange> changesIn(const Table& table, sqlite3_value** values) {
    std::vector<FieldChange> changes;
    const std::size_t columns = table.definition().columns.size();
    for (std::size_t i = 0; i < columns; ++i) {
        if (sqlite3_value_nochange(values[i]) != 0) {
            changes.emplace_back(Kept{});
        } else {
            changes.emplace_back(valueOf(values[i]));
        }
    }
    for (std::size_t i = 0; i < table.lengths.size(); ++i) {
        sqlite3_value* length = values[columns + i];
        if (sqlite3_value_nochange(length) == 0 && sqlite3_value_type(length) != SQLITE_NULL) {
            throw data::Error(QStringLiteral("the length of a value cannot be written"));
        }
    }
    return changes;
}

/// The number that the table gave to the row; 0 when it gives none.
qint64 autoNumberOf(PageFile& file, const TableDefinition& table, RowPlace place) {
    const auto column = std::find_if(
        table.columns.begin(), table.columns.end(),
        [](const Column& each) { return each.isAutoNumber && each.type == FieldType::Long; });
    const auto found = column == table.columns.end() ? std::nullopt : findRow(file, place);
    if (!found) {
        return 0;
    }
    const Row row(file.layout(), table, found->page, found->bytes);
    const Value value = fieldValue(file, row, *column);
    const auto* number = std::get_if<qint64>(&value);
    return number == nullptr ? 0 : *number;
}

/// The rules of a table, and its relationships. What of these cannot be kept becomes the refusal.
TableRules rulesOf(SeenTables& all, const NamedTable& table,
                   std::vector<Relationship>& relationships) {
    TableRules rules = readTableRules(all.file, *table.definition);
    if (!rules.refusal.isEmpty()) {
        return rules;
    }
    std::vector<NamedTable> tables;
    for (const SeenTable& each : all.tables) {
        if (each.damage.isEmpty()) {
            tables.push_back({each.entry.name, &each.definition});
        }
    }
    const auto found = relationshipsOf(all.file, table, tables);
    if (found) {
        relationships = *found;
    } else {
        rules.refusal = QStringLiteral(
            "what the file says of the table's relationships is "
            "contradictory, or only the Access program understands it");
    }
    return rules;
}

RelationshipKeeper::WriterOf writersOf(SeenTables& all) {
    return [&all](const NamedTable& table) -> TableWriter& {
        const auto found = std::find_if(
            all.tables.begin(), all.tables.end(),
            [&](const SeenTable& each) { return &each.definition == table.definition; });
        return all.writerOf(*found);
    };
}

/// Runs `operation` for SQLite: its Error becomes the table's.
template <class Operation>
int guarded(sqlite3_vtab* table, Operation operation) {
    try {
        operation();
        return SQLITE_OK;
    } catch (const data::Error& error) {
        return static_cast<Table*>(table)->fail(error);
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    } catch (const std::exception&) {
        return SQLITE_ERROR;
    }
}

int connect(sqlite3* database, void* shown, int count, const char* const* arguments,
            sqlite3_vtab** result, char** message) {
    auto& all = *static_cast<SeenTables*>(shown);
    const std::size_t number = count > 3 ? QByteArray(arguments[3]).toULongLong() : 0;
    auto table = std::make_unique<Table>();
    table->all = &all;
    table->seen = &all.tables.at(number);
    const QByteArray declared = declaration(*table).toUtf8();
    const int outcome = sqlite3_declare_vtab(database, declared.constData());
    if (outcome != SQLITE_OK) {
        *message = sqlite3_mprintf("%s", sqlite3_errmsg(database));
        return outcome;
    }
    *result = table.release();
    return SQLITE_OK;
}

int disconnect(sqlite3_vtab* table) {
    delete static_cast<Table*>(table);
    return SQLITE_OK;
}

int chooseIndex(sqlite3_vtab* table, sqlite3_index_info* info) {
    choosePlan(static_cast<Table*>(table)->definition(), *info);
    return SQLITE_OK;
}

int open(sqlite3_vtab* table, sqlite3_vtab_cursor** result) {
    return guarded(table, [&] { *result = new Cursor(*static_cast<Table*>(table)); });
}

int close(sqlite3_vtab_cursor* cursor) {
    delete static_cast<Cursor*>(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor* cursor, int plan, const char*, int, sqlite3_value** values) {
    return guarded(cursor->pVtab, [&] {
        const auto& table = *static_cast<Table*>(cursor->pVtab);
        if (!table.seen->damage.isEmpty()) {
            throw data::Error(table.seen->damage);
        }
        static_cast<Cursor*>(cursor)->rows.filter(plan, values);
    });
}

int next(sqlite3_vtab_cursor* cursor) {
    return guarded(cursor->pVtab, [&] { static_cast<Cursor*>(cursor)->rows.next(); });
}

int isAtEnd(sqlite3_vtab_cursor* cursor) {
    return static_cast<Cursor*>(cursor)->rows.isAtEnd() ? 1 : 0;
}

int giveColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
    if (sqlite3_vtab_nochange(context) != 0) {
        return SQLITE_OK;  // an update keeps the field
    }
    return guarded(cursor->pVtab, [&] {
        giveField(*static_cast<Table*>(cursor->pVtab), static_cast<Cursor*>(cursor)->rows.row(),
                  context, static_cast<std::size_t>(column));
    });
}

int giveNumber(sqlite3_vtab_cursor* cursor, sqlite3_int64* number) {
    *number = static_cast<Cursor*>(cursor)->rows.number();
    return SQLITE_OK;
}

/// The row is `values[0]`, NULL for a new one, and is to be `values[1]`; its fields follow, unless
/// it is to be removed.
int update(sqlite3_vtab* base, int count, sqlite3_value** values, sqlite3_int64* newNumber) {
    return guarded(base, [&] {
        const auto& table = *static_cast<Table*>(base);
        SeenTables& all = *table.all;
        TableWriter& writer = all.writerOf(*table.seen);
        const ChangingRows changing(all);
        const RowPlace place = rowPlace(sqlite3_value_int64(values[0]));
        if (count == 1) {
            if (findRow(all.file, place)) {  // else a relationship has removed it
                writer.remove(place);
            }
            return;
        }
        const bool isNew = sqlite3_value_type(values[0]) == SQLITE_NULL;
        const bool hasNumber = sqlite3_value_type(values[1]) != SQLITE_NULL;
        if (isNew ? hasNumber : sqlite3_value_int64(values[0]) != sqlite3_value_int64(values[1])) {
            throw data::Error(QStringLiteral("the number of a row cannot be chosen"));
        }
        const std::vector<FieldChange> changes = changesIn(table, values + 2);
        if (!isNew) {
            writer.update(place, changes);
            return;
        }
        const RowPlace added = writer.insert(changes);
        all.lastAutoNumber = autoNumberOf(all.file, table.definition(), added);
        *newNumber = rowNumber(added);
    });
}

constexpr sqlite3_module module() {
    sqlite3_module functions{};
    functions.iVersion = 2;
    functions.xCreate = connect;
    functions.xConnect = connect;
    functions.xBestIndex = chooseIndex;
    functions.xDisconnect = disconnect;
    functions.xDestroy = disconnect;
    functions.xOpen = open;
    functions.xClose = close;
    functions.xFilter = filter;
    functions.xNext = next;
    functions.xEof = isAtEnd;
    functions.xColumn = giveColumn;
    functions.xRowid = giveNumber;
    functions.xUpdate = update;
    return functions;
}

constexpr sqlite3_module kFunctions = module();

}  // namespace

QString lengthColumn(const QString& column) {
    return column + QStringLiteral("#length");
}

RowChanger::RowChanger(SeenTables& all, const TableDefinition& table, const QString& name)
    : rules(rulesOf(all, {name, &table}, relationships)),
      indexes(all.file, table, name),
      keeper(all.file, table, relationships, writersOf(all), all.level),
      writer(all.file, table, rules, indexes, &keeper) {}

TableWriter& SeenTables::writerOf(SeenTable& table) {
    if (table.changer == nullptr) {
        table.changer = std::make_unique<RowChanger>(*this, table.definition, table.entry.name);
    }
    return table.changer->writer;
}

void showTables(sqlite3* database, SeenTables& tables) {
    if (sqlite3_create_module_v2(database, kModule, &kFunctions, &tables, nullptr) != SQLITE_OK) {
        data::throwLastError(database);
    }
    for (std::size_t i = 0; i < tables.tables.size(); ++i) {
        SeenTable& table = tables.tables[i];
        try {
            data::run(database, QStringLiteral("CREATE VIRTUAL TABLE %1 USING %2(%3)")
                                    .arg(data::quoted(table.entry.name), QLatin1StringView(kModule),
                                         QString::number(i)));
        } catch (const data::Error& error) {
            table.damage = error.description();  // a name that SQLite does not have
        }
    }
}

}  // namespace varo::access
