#include "platform/data/statement.h"

#include "platform/data/storable_text.h"
#include "platform/data/temporary_files.h"

#include <QLocale>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>

namespace varo::data {

namespace {

QByteArray storable(const QString& text) {
    if (!isStorable(text)) {
        throw Error(QStringLiteral("the text holds a character that cannot be stored"));
    }
    return text.toUtf8();
}

class Binder {
  public:
    Binder(sqlite3_stmt* statement, int position) : statement_(statement), position_(position) {}

    int operator()(std::nullptr_t) const { return sqlite3_bind_null(statement_, position_); }
    int operator()(qint32 value) const { return sqlite3_bind_int(statement_, position_, value); }
    int operator()(qint64 value) const { return sqlite3_bind_int64(statement_, position_, value); }
    int operator()(const QString& value) const {
        const QByteArray text = storable(value);
        allowValue(sqlite3_db_handle(statement_), text.size());
        return sqlite3_bind_text64(statement_, position_, text.constData(),
                                   static_cast<sqlite3_uint64>(text.size()), SQLITE_TRANSIENT,
                                   SQLITE_UTF8);
    }

  private:
    sqlite3_stmt* statement_;
    int position_;
};

/// More texts than the operations of the component have.
constexpr std::size_t kMostIdleStatements = 64;

void bind(sqlite3_stmt* statement, const Arguments& arguments) {
    if (sqlite3_bind_parameter_count(statement) != static_cast<int>(arguments.size())) {
        throw Error(QStringLiteral("the statement takes another number of values"));
    }
    int position = 0;
    for (const Argument& argument : arguments) {
        if (std::visit(Binder(statement, ++position), argument) != SQLITE_OK) {
            throwLastError(sqlite3_db_handle(statement));
        }
    }
}

/// SQLite's own text of a number has 15 digits, too few for some to read back.
QString numberText(double value) {
    constexpr double kSmallestPlain = 1e-5;
    constexpr double kLargestPlain = 1e16;
    const double size = std::abs(value);
    const bool isPlain = size == 0 || (size >= kSmallestPlain && size < kLargestPlain);
    return QString::number(size == 0 ? 0 : value, isPlain ? 'f' : 'g',
                           QLocale::FloatingPointShortest);
}

void exactText(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    sqlite3_value* value = *values;
    switch (sqlite3_value_type(value)) {
        case SQLITE_FLOAT: {
            const QByteArray text = numberText(sqlite3_value_double(value)).toUtf8();
            sqlite3_result_text64(context, text.constData(),
                                  static_cast<sqlite3_uint64>(text.size()), SQLITE_TRANSIENT,
                                  SQLITE_UTF8);
            break;
        }
        case SQLITE_BLOB:
            sqlite3_result_null(context);
            break;
        default:
            sqlite3_result_value(context, value);
    }
}

bool isBlank(const char* text) {
    return std::all_of(text, text + std::char_traits<char>::length(text), [](char c) {
        return std::isspace(static_cast<unsigned char>(c)) != 0 || c == ';';
    });
}

}  // namespace

void throwLastError(sqlite3* database) {
    if (sqlite3_extended_errcode(database) == kTemporaryFileFull) {
        throw Error(
            QStringLiteral("what the statement sorts takes many times the room of the file: "
                           "the file is damaged"));
    }
    const int code = sqlite3_errcode(database);
    throw Error(QString::fromUtf8(sqlite3_errmsg(database)),
                code == SQLITE_BUSY        ? Error::Cause::Locked
                : code == SQLITE_INTERRUPT ? Error::Cause::Interrupted
                                           : Error::Cause::Other);
}

void allowValue(sqlite3* database, qint64 bytes) {
    if (bytes > kShortValue / 2) {
        const qint64 allowed = sqlite3_limit(database, SQLITE_LIMIT_LENGTH, -1);
        const qint64 wanted = allowed + std::min(bytes, kLongestValue);
        sqlite3_limit(database, SQLITE_LIMIT_LENGTH,
                      static_cast<int>(std::min(wanted, kLongestValue)));
    }
}

StatementHandle prepare(sqlite3* database, const QString& text, const Arguments& arguments) {
    const QByteArray sql = storable(text);
    if (sql.size() >= std::numeric_limits<int>::max()) {
        throw Error(QStringLiteral("the statement is too long"));
    }
    sqlite3_stmt* compiled = nullptr;
    const char* tail = nullptr;
    if (sqlite3_prepare_v3(database, sql.constData(), static_cast<int>(sql.size()) + 1, 0,
                           &compiled, &tail) != SQLITE_OK) {
        throwLastError(database);
    }
    StatementHandle statement(compiled);
    if (statement == nullptr || !isBlank(tail)) {
        throw Error(QStringLiteral("not exactly one statement"));
    }
    bind(statement.get(), arguments);
    return statement;
}

bool step(sqlite3_stmt* statement) {
    const int result = sqlite3_step(statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        throwLastError(sqlite3_db_handle(statement));
    }
    return result == SQLITE_ROW;
}

QString textOf(const char* utf8, qsizetype length) {
    constexpr QByteArrayView kMark = "\xEF\xBB\xBF";
    QByteArrayView rest(utf8, utf8 == nullptr ? 0 : length);
    qsizetype marks = 0;
    for (; rest.startsWith(kMark); rest = rest.sliced(kMark.size())) {
        ++marks;  // QString::fromUtf8() drops the first
    }
    if (marks == 0) {
        return QString::fromUtf8(rest);
    }
    return QString(marks, QChar::ByteOrderMark) + QString::fromUtf8(rest);
}

QString columnText(sqlite3_stmt* statement, int column, qsizetype most) {
    if (sqlite3_column_type(statement, column) == SQLITE_FLOAT) {
        return numberText(sqlite3_column_double(statement, column));
    }
    const auto* utf8 = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    const qsizetype length = sqlite3_column_bytes(statement, column);
    // No character takes more bytes.
    constexpr int kCharacterBytes = 4;
    const qsizetype enough = most > length ? length : std::min(length, kCharacterBytes * most);
    QString text = textOf(utf8, enough);
    if (enough == length && text.size() <= most) {
        return text;
    }
    text.truncate(most - 1);
    if (text.back().isHighSurrogate()) {
        text.chop(1);
    }
    return text + u'…';
}

QString columnName(sqlite3_stmt* statement, int column) {
    const char* name = sqlite3_column_name(statement, column);
    return textOf(name, static_cast<qsizetype>(qstrlen(name)));
}

void run(sqlite3* database, const QString& text, const Arguments& arguments) {
    const StatementHandle statement = prepare(database, text, arguments);
    while (step(statement.get())) {
    }
}

void StatementCache::run(sqlite3* database, const QString& text, const Arguments& arguments) {
    auto place = idle_.find(text);
    if (place == idle_.end()) {
        if (idle_.size() == kMostIdleStatements) {
            idle_.clear();
        }
        place = idle_.emplace(text, nullptr).first;
    }
    // Taken out while it runs: one that fails is not used again.
    StatementHandle statement = std::move(place->second);
    if (statement != nullptr) {
        bind(statement.get(), arguments);
    } else {
        statement = prepare(database, text, arguments);
    }
    while (step(statement.get())) {
    }
    sqlite3_reset(statement.get());
    sqlite3_clear_bindings(statement.get());
    place->second = std::move(statement);
}

void addExactText(sqlite3* database) {
    constexpr int kTraits = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY;
    if (sqlite3_create_function_v2(database, "exact_text", 1, kTraits, nullptr, exactText, nullptr,
                                   nullptr, nullptr) != SQLITE_OK) {
        throwLastError(database);
    }
}

QString quoted(const QString& name) {
    return u'"' + QString(name).replace(u'"', QStringLiteral("\"\"")) + u'"';
}

}  // namespace varo::data
