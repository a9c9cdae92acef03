#include "platform/data/sqlite_structure.h"

#include "platform/data/statement.h"

#include <QRegularExpression>

#include <algorithm>

namespace varo::data {

namespace {

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

/// The words of a statement in capitals, separated by blanks; what is quoted and comments are not
/// among them.
QString wordsOf(const QString& statement) {
    static const QRegularExpression other(
        QStringLiteral(R"('(?:[^']|'')*'|"(?:[^"]|"")*"|`(?:[^`]|``)*`|\[[^\]]*\]|--[^\n]*|)"
                       R"(/\*[\s\S]*?(?:\*/|$)|[^\w$\x{80}-\x{10FFFF}])"));
    return u' ' + QString(statement).replace(other, QStringLiteral(" ")).simplified().toUpper() +
           u' ';
}

/// Whether the statement that created a table has a constraint by which a row that breaks it is
/// left out, or another row is deleted, without an error.
bool dropsRows(const QString& words) {
    return words.contains(QLatin1StringView(" ON CONFLICT REPLACE ")) ||
           words.contains(QLatin1StringView(" ON CONFLICT IGNORE "));
}

/// Whether a default as the file says it is a constant.
bool isConstant(const QString& value) {
    static const QRegularExpression constant(
        QRegularExpression::anchoredPattern(
            QStringLiteral(R"([+-]?\s*(?:0x[0-9a-f]+|(?:\d+\.?\d*|\.\d+)(?:e[+-]?\d+)?)|)"
                           R"(x?'(?:[^']|'')*'|"(?:[^"]|"")*"|null|true|false|)"
                           R"(current_(?:date|time|timestamp))")),
        QRegularExpression::CaseInsensitiveOption);
    return constant.match(value).hasMatch();
}

/// Whether SQLite has this way of comparing texts by itself.
bool isOwnCollation(const QString& name) {
    return QStringList{QStringLiteral("binary"), QStringLiteral("nocase"), QStringLiteral("rtrim")}
        .contains(name, Qt::CaseInsensitive);
}

StatementHandle rowsOf(sqlite3* database, const char* query, const QString& argument) {
    return prepare(database, QLatin1StringView(query), {argument});
}

/// Whether an index of the table has a key that is an expression, a condition, or a way of
/// comparing that SQLite lacks.
bool hasComputedIndex(sqlite3* database, const QString& table) {
    const auto indexes = rowsOf(database, "Select name,partial From pragma_index_list(?)", table);
    while (step(indexes.get())) {
        if (sqlite3_column_int(indexes.get(), 1) != 0) {
            return true;
        }
        const auto keys = rowsOf(database, "Select cid,coll From pragma_index_xinfo(?)",
                                 columnText(indexes.get(), 0));
        while (step(keys.get())) {
            constexpr int kExpression = -2;
            if (sqlite3_column_int(keys.get(), 0) == kExpression ||
                !isOwnCollation(columnText(keys.get(), 1))) {
                return true;
            }
        }
    }
    return false;
}

/// What a statement calls the number of a row; "" when the table has none or columns have its
/// names.
QString rowNumberOf(sqlite3* database, const QString& table, const QStringList& columns) {
    for (const char* each : {"rowid", "_rowid_", "oid"}) {
        const QString name = QString::fromLatin1(each);
        const QString query = QStringLiteral("Select %1 From %2").arg(name, quoted(table));
        sqlite3_stmt* compiled = nullptr;
        // It does not compile for a table that was made without row numbers.
        if (!columns.contains(name, Qt::CaseInsensitive) &&
            sqlite3_prepare_v2(database, query.toUtf8().constData(), -1, &compiled, nullptr) ==
                SQLITE_OK) {
            sqlite3_finalize(compiled);
            return name;
        }
    }
    return {};
}

void readColumns(sqlite3* database, const QString& table, TableStructure& structure) {
    QStringList names;
    const auto columns =
        rowsOf(database, "Select name,type,dflt_value,hidden From pragma_table_xinfo(?)", table);
    while (step(columns.get())) {
        const QString name = columnText(columns.get(), 0);
        const QByteArray type = columnText(columns.get(), 1).toUtf8();
        const bool isComputed = sqlite3_column_int(columns.get(), 3) != 0;
        const bool hasDefault = sqlite3_column_type(columns.get(), 2) != SQLITE_NULL;
        const char* collation = nullptr;
        int isAutoNumber = 0;
        sqlite3_table_column_metadata(database, "main", table.toUtf8().constData(),
                                      name.toUtf8().constData(), nullptr, &collation, nullptr,
                                      nullptr, &isAutoNumber);
        structure.runsNothing = structure.runsNothing && !isComputed &&
                                isOwnCollation(QString::fromUtf8(collation)) &&
                                (!hasDefault || isConstant(columnText(columns.get(), 2)));
        names.append(name);
        if (isComputed) {
            continue;
        }
        structure.columns.append({name, kindOf(type), typeOf(type)});
        if (isAutoNumber != 0) {
            structure.autoNumber = name;
        }
    }
    structure.rowNumber = rowNumberOf(database, table, names);
}

}  // namespace

std::optional<TableStructure> tableStructure(sqlite3* database, const QString& table) {
    TableStructure found;
    bool exists = false;
    bool isStored = false;
    const auto parts = rowsOf(database,
                              "Select type,rootpage,sql From sqlite_schema "
                              "Where tbl_name = ? Collate NoCase",
                              table);
    while (step(parts.get())) {
        const QString type = columnText(parts.get(), 0);
        if (type == QLatin1StringView("trigger")) {
            found.changesAsTold = false;
            found.runsNothing = false;
        } else if (type != QLatin1StringView("index")) {
            exists = true;
            const QString words = wordsOf(columnText(parts.get(), 2));
            // What the schema's own columns say of a part may be wrong.
            isStored = sqlite3_column_int64(parts.get(), 1) > 0 &&
                       words.startsWith(QLatin1StringView(" CREATE TABLE "));
            found.changesAsTold = found.changesAsTold && isStored && !dropsRows(words);
            found.runsNothing = found.runsNothing && isStored &&
                                !words.contains(QLatin1StringView(" CHECK ")) &&
                                !words.contains(QLatin1StringView(" WITHOUT ROWID "));
        }
    }
    if (!exists) {
        return std::nullopt;
    }
    if (isStored) {
        readColumns(database, table, found);
        found.runsNothing = found.runsNothing && !hasComputedIndex(database, table);
    }
    return found;
}

QStringList tableNames(sqlite3* database) {
    QStringList names;
    const StatementHandle rows =
        prepare(database, QStringLiteral("Select name From sqlite_schema As parts "
                                         "Where type = 'table' And rootpage > 0 "
                                         "And name Not Like 'sqlite\\_%' Escape '\\' "
                                         "And Not Exists (Select 1 From sqlite_schema As owners "
                                         "Where owners.type = 'table' And owners.rootpage = 0 And "
                                         "substr(parts.name, 1, length(owners.name) + 1) = "
                                         "owners.name || '_' Collate NoCase) Order By rowid"));
    while (step(rows.get())) {
        names.append(columnText(rows.get(), 0));
    }
    return names;
}

}  // namespace varo::data
