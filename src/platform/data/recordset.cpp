#include "platform/data/recordset.h"

#include "platform/data/row_source.h"

#include <algorithm>
#include <limits>

namespace varo::data {

namespace {

sqlite3_stmt* openStatement(const std::shared_ptr<RowSource>& rows) {
    if (rows == nullptr || rows->statement == nullptr) {
        throw Error(QStringLiteral("the record set is closed"));
    }
    return rows->statement.get();
}

sqlite3_stmt* currentRow(const std::shared_ptr<RowSource>& rows, int column) {
    if (rows == nullptr || !rows->onRow) {
        throw Error(QStringLiteral("the record set has no current row"));
    }
    sqlite3_stmt* statement = rows->statement.get();
    if (column < 0 || column >= sqlite3_column_count(statement)) {
        throw Error(QStringLiteral("the record set has no column %1").arg(column));
    }
    return statement;
}

int requiredColumn(const Recordset& recordset, QStringView name) {
    const int column = recordset.column(name);
    if (column < 0) {
        throw Error(QStringLiteral("the record set has no column %1").arg(name));
    }
    return column;
}

}  // namespace

Recordset::Recordset(std::shared_ptr<RowSource> rows) : rows_(std::move(rows)) {}

bool Recordset::isOpen() const noexcept {
    return rows_ != nullptr && rows_->statement != nullptr;
}

bool Recordset::atEnd() const noexcept {
    return rows_ == nullptr || !rows_->onRow;
}

void Recordset::moveNext() {
    openStatement(rows_);
    if (!rows_->onRow) {
        throw Error(QStringLiteral("the record set has no next row"));
    }
    rows_->next();
}

int Recordset::column(QStringView name) const {
    sqlite3_stmt* statement = openStatement(rows_);
    const int count = sqlite3_column_count(statement);
    for (int column = 0; column < count; ++column) {
        if (name.compare(data::columnName(statement, column), Qt::CaseInsensitive) == 0) {
            return column;
        }
    }
    return -1;
}

int Recordset::columnCount() const noexcept {
    return isOpen() ? sqlite3_column_count(rows_->statement.get()) : 0;
}

QString Recordset::columnName(int column) const {
    return data::columnName(openStatement(rows_), column);
}

ValueType Recordset::valueType(int column) const {
    switch (sqlite3_column_type(currentRow(rows_, column), column)) {
        case SQLITE_INTEGER:
            return ValueType::Integer;
        case SQLITE_FLOAT:
            return ValueType::Floating;
        case SQLITE_TEXT:
            return ValueType::Text;
        case SQLITE_BLOB:
            return ValueType::Binary;
        default:
            return ValueType::Null;
    }
}

qint32 Recordset::integer(int column) const {
    const qint64 value = integer64(column);
    return static_cast<qint32>(std::clamp<qint64>(value, std::numeric_limits<qint32>::min(),
                                                  std::numeric_limits<qint32>::max()));
}

qint64 Recordset::integer64(int column) const {
    return sqlite3_column_int64(currentRow(rows_, column), column);
}

double Recordset::real(int column) const {
    return sqlite3_column_double(currentRow(rows_, column), column);
}

QString Recordset::text(int column) const {
    return columnText(currentRow(rows_, column), column);
}

QString Recordset::text(int column, int most) const {
    return columnText(currentRow(rows_, column), column, most);
}

qint32 Recordset::integer(QStringView name) const {
    return integer(requiredColumn(*this, name));
}

QString Recordset::text(QStringView name) const {
    return text(requiredColumn(*this, name));
}

}  // namespace varo::data
