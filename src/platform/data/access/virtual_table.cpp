#include "platform/data/access/virtual_table.h"

#include "platform/data/access/index_key.h"
#include "platform/data/access/index_scan.h"
#include "platform/data/access/long_value.h"
#include "platform/data/access/value.h"
#include "platform/data/identifiers.h"
#include "platform/data/statement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>

namespace varo::access {

namespace {

constexpr char kModule[] = "access_table";

/// What xBestIndex() decides for xFilter(): how the rows are found. The number of an index stands
/// above the bits that say which values there are for its first column.
enum Plan : int {
    kWholeTable = 0,
    kRowNumber = 1,
    kByIndex = 2,
    kKind = 3,  ///< the bits of the above
    kEqual = 4,
    kAbove = 8,   ///< not below the value
    kBelow = 16,  ///< not above the value
    kIndexShift = 8,
};

struct Shown {
    PageFile& file;
    const std::vector<SeenTable>& tables;
};

struct Table : sqlite3_vtab {
    PageFile* file;
    const SeenTable* seen;
    std::vector<std::size_t> lengths;  ///< the columns whose lengths follow the columns

    const TableDefinition& definition() const { return seen->definition; }

    int fail(const data::Error& error) {
        sqlite3_free(zErrMsg);
        zErrMsg = sqlite3_mprintf("%s: %s", seen->entry.name.toUtf8().constData(), error.what());
        return error.isLocked() ? SQLITE_BUSY : SQLITE_ERROR;
    }
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

/// The rows that a statement reads, in one of the ways of a Plan.
class Cursor : public sqlite3_vtab_cursor {
  public:
    explicit Cursor(Table& table) : sqlite3_vtab_cursor{&table}, table_(table) {
        table_.file->beginReading();
    }
    ~Cursor() { table_.file->endReading(); }
    Q_DISABLE_COPY_MOVE(Cursor)

    void filter(int plan, sqlite3_value** values);
    void next();
    bool isAtEnd() const { return !row_.has_value(); }
    qint64 number() const { return rowNumber(place_); }
    void giveColumn(sqlite3_context* context, std::size_t column);

  private:
    void find(RowPlace place);
    void filterByIndex(int plan, sqlite3_value** values);

    Table& table_;
    std::unique_ptr<RowScan> rows_;
    std::unique_ptr<IndexScan> entries_;
    QByteArray last_;  ///< beginning of the last key that is wanted
    bool hasLast_ = false;
    RowPlace place_;
    std::optional<Row> row_;
};

void Cursor::find(RowPlace place) {
    row_.reset();
    place_ = place;
    PageFile& file = *table_.file;
    const Page page = file.page(place.page);
    const Bytes bytes(*page);
    if (static_cast<PageKind>(bytes.byte(0)) == PageKind::Data &&
        ownerOf(bytes) == table_.definition().page && place.row < rowCount(file.layout(), bytes)) {
        if (const auto found = findRow(file, place)) {
            row_.emplace(file.layout(), table_.definition(), found->page, found->bytes);
        }
    }
}

void Cursor::filter(int plan, sqlite3_value** values) {
    rows_.reset();
    entries_.reset();
    last_.clear();
    row_.reset();
    if (!table_.seen->damage.isEmpty()) {
        throw data::Error(table_.seen->damage);
    }
    switch (plan & kKind) {
        case kRowNumber: {
            const qint64 number = sqlite3_value_int64(values[0]);
            const RowPlace place = rowPlace(number);
            if (number >= 0 && rowNumber(place) == number &&
                place.page < table_.file->pageCount()) {
                find(place);
            }
            break;
        }
        case kByIndex:
            filterByIndex(plan, values);
            break;
        default:
            rows_ = std::make_unique<RowScan>(*table_.file, table_.definition());
            next();
    }
}

/// A bound as a whole number: the least that is not below `value`, or the largest that is not above
/// it; nothing when `value` is no number.
std::optional<qint64> wholeBound(sqlite3_value* value, bool isUpper) {
    switch (sqlite3_value_numeric_type(value)) {
        case SQLITE_INTEGER:
            return sqlite3_value_int64(value);
        case SQLITE_FLOAT: {
            constexpr double kMost = 4e18;
            const double number = sqlite3_value_double(value);
            const double whole = isUpper ? std::floor(number) : std::ceil(number);
            return static_cast<qint64>(std::clamp(whole, -kMost, kMost));
        }
        default:
            return std::nullopt;
    }
}

void Cursor::filterByIndex(int plan, sqlite3_value** values) {
    const TableDefinition& table = table_.definition();
    const Index& index = table.indexes[static_cast<std::size_t>(plan >> kIndexShift)];
    const IndexColumn& first = index.columns.front();
    const Column& column = *table.columnByNumber(first.column);
    // A bound that the column's type does not have is none, or leaves nothing.
    const auto [least, most] = numberRange(column);
    qint64 lower = least;
    qint64 upper = most;
    int at = 0;
    for (const int use : {kEqual, kAbove, kBelow}) {
        if ((plan & use) == 0) {
            continue;
        }
        sqlite3_value* value = values[at++];
        const auto low = wholeBound(value, false);
        const auto high = wholeBound(value, true);
        if (!low || !high) {
            if (sqlite3_value_type(value) == SQLITE_NULL || use == kEqual) {
                return;  // nothing compares with NULL, and no number equals a text
            }
            continue;  // every number is below every text: the statement itself compares
        }
        lower = use == kBelow ? lower : std::max(lower, *low);
        upper = use == kAbove ? upper : std::min(upper, *high);
    }
    if (lower > upper) {
        return;
    }
    QByteArray begin;
    // Without a value the entries of NULL are wanted, too.
    hasLast_ = (plan & (kEqual | kAbove | kBelow)) != 0;
    if (hasLast_) {
        appendNumberKey(column, first.isDescending, first.isDescending ? upper : lower, begin);
        appendNumberKey(column, first.isDescending, first.isDescending ? lower : upper, last_);
    }
    entries_ = std::make_unique<IndexScan>(*table_.file, index.root, begin);
    next();
}

void Cursor::next() {
    row_.reset();
    if (rows_ != nullptr) {
        if (const auto found = rows_->next()) {
            place_ = rows_->place();
            row_.emplace(table_.file->layout(), table_.definition(), found->page, found->bytes);
        }
        return;
    }
    while (entries_ != nullptr && !row_ && entries_->next() &&
           (!hasLast_ || entries_->key().left(last_.size()) <= last_)) {
        find(entries_->place());
    }
}

void Cursor::giveColumn(sqlite3_context* context, std::size_t column) {
    const auto& columns = table_.definition().columns;
    PageFile& file = *table_.file;
    if (column >= columns.size()) {
        const auto field = row_->field(columns.at(table_.lengths.at(column - columns.size())));
        if (field && !field->isEmpty()) {
            sqlite3_result_int64(context, longValueSize(*field));
        }
        return;
    }
    const Value value = fieldValue(file, *row_, columns[column]);
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
    const auto& all = *static_cast<Shown*>(shown);
    const std::size_t number = count > 3 ? QByteArray(arguments[3]).toULongLong() : 0;
    auto table = std::make_unique<Table>();
    table->file = &all.file;
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

/// The use that a condition on the first column of an index can have.
int useOf(int operation) {
    switch (operation) {
        case SQLITE_INDEX_CONSTRAINT_EQ:
            return kEqual;
        case SQLITE_INDEX_CONSTRAINT_GT:
        case SQLITE_INDEX_CONSTRAINT_GE:
            return kAbove;
        case SQLITE_INDEX_CONSTRAINT_LT:
        case SQLITE_INDEX_CONSTRAINT_LE:
            return kBelow;
        default:
            return 0;
    }
}

/// A way to find the rows, and what SQLite is to hand to it.
struct Choice {
    int plan = kWholeTable;
    std::array<int, 3> constraints{-1, -1, -1};  ///< by use: equal, above, below
    double cost = 0;
    sqlite3_int64 rows = 0;
    bool isOrdered = false;
};

bool isOrderedBy(const sqlite3_index_info& info, int column) {
    return info.nOrderBy == 1 && info.aOrderBy[0].iColumn == column && info.aOrderBy[0].desc == 0;
}

Choice choiceFor(const Table& table, const sqlite3_index_info& info, std::size_t number) {
    const Index& index = table.definition().indexes[number];
    const auto rows = static_cast<double>(std::max<quint32>(table.definition().rowCount, 10));
    Choice choice;
    const int column = table.definition().positionOf(index.columns.front().column);
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto& constraint = info.aConstraint[i];
        const int use = useOf(constraint.op);
        if (constraint.usable != 0 && constraint.iColumn == column && use != 0) {
            const std::size_t place = use == kEqual ? 0 : use == kAbove ? 1 : 2;
            choice.constraints[place] = i;
        }
    }
    if (choice.constraints[0] >= 0) {
        choice.constraints[1] = choice.constraints[2] = -1;
    }
    choice.isOrdered =
        isOrderedBy(info, column) && !index.columns.front().isDescending && !index.ignoresNulls;
    const double share = choice.constraints[0] >= 0 ? 1 / std::sqrt(rows)
                         : choice.constraints[1] >= 0 || choice.constraints[2] >= 0 ? 0.25
                                                                                    : 1;
    const bool isSingle = choice.constraints[0] >= 0 && index.isUnique && index.columns.size() == 1;
    choice.rows = isSingle ? 1 : static_cast<sqlite3_int64>(rows * share) + 1;
    choice.cost = static_cast<double>(choice.rows) * 2 + 10;
    choice.plan = kByIndex | static_cast<int>(number << kIndexShift);
    return choice;
}

Choice bestChoice(const Table& table, const sqlite3_index_info& info) {
    const TableDefinition& definition = table.definition();
    const auto rows = static_cast<double>(definition.rowCount) + 10;
    Choice best;
    best.rows = static_cast<sqlite3_int64>(rows);
    best.cost = rows * 1.5 + 20;
    best.isOrdered = isOrderedBy(info, -1);
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto& constraint = info.aConstraint[i];
        if (constraint.usable != 0 && constraint.iColumn < 0 &&
            constraint.op == SQLITE_INDEX_CONSTRAINT_EQ) {
            return {kRowNumber, {i, -1, -1}, 1, 1, true};
        }
    }
    for (std::size_t i = 0; i < definition.indexes.size(); ++i) {
        const Index& index = definition.indexes[i];
        const Column* column = index.columns.empty()
                                   ? nullptr
                                   : definition.columnByNumber(index.columns.front().column);
        if (column == nullptr || !hasNumberKey(*column)) {
            continue;
        }
        const Choice choice = choiceFor(table, info, i);
        const bool isUseful = choice.isOrdered || choice.rows < best.rows;
        const double sorting = info.nOrderBy > 0 && !choice.isOrdered ? 1.2 : 1;
        const double bestSorting = info.nOrderBy > 0 && !best.isOrdered ? 3 : 1;
        if (isUseful && choice.cost * sorting < best.cost * bestSorting) {
            best = choice;
        }
    }
    return best;
}

int chooseIndex(sqlite3_vtab* base, sqlite3_index_info* info) {
    const Choice choice = bestChoice(*static_cast<Table*>(base), *info);
    int plan = choice.plan;
    int arguments = 0;
    for (std::size_t use = 0; use < choice.constraints.size(); ++use) {
        if (const int constraint = choice.constraints[use]; constraint >= 0) {
            info->aConstraintUsage[constraint].argvIndex = ++arguments;
            if ((plan & kKind) == kByIndex) {
                plan |= kEqual << use;
            }
        }
    }
    info->idxNum = plan;
    info->estimatedCost = choice.cost;
    info->estimatedRows = choice.rows;
    info->orderByConsumed = choice.isOrdered ? 1 : 0;
    if (choice.rows == 1) {
        info->idxFlags |= SQLITE_INDEX_SCAN_UNIQUE;
    }
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
    return guarded(cursor->pVtab, [&] { static_cast<Cursor*>(cursor)->filter(plan, values); });
}

int next(sqlite3_vtab_cursor* cursor) {
    return guarded(cursor->pVtab, [&] { static_cast<Cursor*>(cursor)->next(); });
}

int isAtEnd(sqlite3_vtab_cursor* cursor) {
    return static_cast<Cursor*>(cursor)->isAtEnd() ? 1 : 0;
}

int giveColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
    return guarded(cursor->pVtab, [&] {
        static_cast<Cursor*>(cursor)->giveColumn(context, static_cast<std::size_t>(column));
    });
}

int giveNumber(sqlite3_vtab_cursor* cursor, sqlite3_int64* number) {
    *number = static_cast<Cursor*>(cursor)->number();
    return SQLITE_OK;
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
    return functions;
}

constexpr sqlite3_module kFunctions = module();

}  // namespace

QString lengthColumn(const QString& column) {
    return column + QStringLiteral("#length");
}

void showTables(sqlite3* database, PageFile& file, std::vector<SeenTable>& tables) {
    const int result =
        sqlite3_create_module_v2(database, kModule, &kFunctions, new Shown{file, tables},
                                 [](void* shown) { delete static_cast<Shown*>(shown); });
    if (result != SQLITE_OK) {
        data::throwLastError(database);
    }
    for (std::size_t i = 0; i < tables.size(); ++i) {
        try {
            data::run(database, QStringLiteral("CREATE VIRTUAL TABLE %1 USING %2(%3)")
                                    .arg(data::quoted(tables[i].entry.name),
                                         QLatin1StringView(kModule), QString::number(i)));
        } catch (
            const data::Error& error) {  // its name, or one of its columns, is none of SQLite's
            tables[i].damage = error.description();
        }
    }
}

}  // namespace varo::access
