#include "library/data_table.h"

#include "library/limits.h"
#include "platform/data/identifiers.h"
#include "store/attempt.h"

#include <QHash>

#include <algorithm>
#include <limits>

namespace varo {

namespace {

using data::quoted;

constexpr int kPageRows = 64;
constexpr std::size_t kMostPages = 8;
/// Rows that are listed at once: the first ones, which are looked at, and more.
constexpr int kFirstRows = 1000;
constexpr int kMoreRows = 20000;

bool isShownType(data::ColumnType type) {
    switch (type) {
        case data::ColumnType::Any:
        case data::ColumnType::Integer:
        case data::ColumnType::Floating:
        case data::ColumnType::Money:
        case data::ColumnType::Decimal:
        case data::ColumnType::Text:
        case data::ColumnType::Guid:
            return true;
        case data::ColumnType::Date:
        case data::ColumnType::YesNo:
        case data::ColumnType::Binary:
            return false;
    }
    return false;
}

/// A pattern for LIKE with the escape character `\` that fits every text with `part` in it.
QString patternFor(const QString& part) {
    QString pattern = part;
    for (const QChar special : {u'\\', u'%', u'_'}) {
        pattern.replace(special, QString(u'\\') + special);
    }
    return u'%' + pattern + u'%';
}

}  // namespace

bool DataTable::open(data::Connection& connection, const QString& table) {
    connection_ = &connection;
    columns_.clear();
    table_ = quoted(table);
    const bool isRead = attempt([&] {
        const auto structure = connection.structure(table);
        if (!structure) {
            throw data::Error(QStringLiteral("there is no table %1").arg(table));
        }
        rowNumber_ = structure->rowNumber;
        for (const auto& column : structure->columns) {
            columns_.push_back({column.name, isShownType(column.type)});
        }
    });
    return isRead && list({});
}

bool DataTable::list(const DataListing& listing) {
    listing_ = listing;
    numbers_.clear();
    pages_.clear();
    rowCount_ = 0;
    hasFailed_ = false;
    hasMore_ = !columns_.empty();
    return hasMore_ && loadMore();
}

bool DataTable::loadMore() {
    if (!hasMore_) {
        return true;
    }
    const bool isRead = attempt([&] { rowNumber_.isEmpty() ? countRows() : readNumbers(); });
    hasMore_ = hasMore_ && isRead;
    hasFailed_ = hasFailed_ || !isRead;
    return isRead;
}

/// "" when every row is listed.
QString DataTable::condition() const {
    if (listing_.filter.isEmpty()) {
        return {};
    }
    QStringList parts;
    for (const Column& column : columns_) {
        if (column.isShown) {
            parts.append(
                QStringLiteral("exact_text(%1) Like ?1 Escape '\\'").arg(quoted(column.name)));
        }
    }
    return parts.isEmpty() ? QStringLiteral("?1 Is Null")
                           : u'(' + parts.join(QStringLiteral(" Or ")) + u')';
}

data::Arguments DataTable::conditionArguments() const {
    return listing_.filter.isEmpty() ? data::Arguments{}
                                     : data::Arguments{patternFor(listing_.filter)};
}

/// The order of the listing; rows that are equal in it cannot be told apart, or have numbers.
QString DataTable::order() const {
    QStringList keys;
    if (listing_.sortColumn >= 0) {
        keys.append(quoted(columnName(listing_.sortColumn)) + QStringLiteral(" Collate NoCase") +
                    (listing_.descending ? QStringLiteral(" Desc") : QString()));
    }
    if (!rowNumber_.isEmpty()) {
        keys.append(rowNumber_);
    } else if (!keys.isEmpty()) {
        for (const Column& column : columns_) {
            keys.append(quoted(column.name));
        }
    }
    return keys.isEmpty() ? QString() : QStringLiteral(" Order By ") + keys.join(u',');
}

/// Lists the rows by their numbers: a sorted listing whole, else the next ones.
void DataTable::readNumbers() {
    const bool isSorted = listing_.sortColumn >= 0;
    QStringList conditions(condition());
    if (!isSorted && !numbers_.empty()) {
        conditions.append(QStringLiteral("%1 > %2").arg(rowNumber_).arg(numbers_.back()));
    }
    conditions.removeAll(QString());
    QString query = QStringLiteral("Select %1 From %2").arg(rowNumber_, table_);
    if (!conditions.isEmpty()) {
        query += QStringLiteral(" Where ") + conditions.join(QStringLiteral(" And "));
    }
    query += order();
    const int wanted = isSorted           ? std::numeric_limits<int>::max()
                       : numbers_.empty() ? kFirstRows
                                          : kMoreRows;
    query += QStringLiteral(" Limit %1").arg(wanted);
    int count = 0;
    for (auto rs = connection_->query(query, conditionArguments()); !rs.atEnd(); rs.moveNext()) {
        numbers_.push_back(rs.integer64(0));
        ++count;
    }
    rowCount_ = static_cast<int>(numbers_.size());
    hasMore_ = count == wanted;
}

/// Lists all rows of a table that does not number them, each by its place.
void DataTable::countRows() {
    const QString filter = condition();
    const data::Recordset rs = connection_->query(
        QStringLiteral("Select count(1) From %1%2")
            .arg(table_, filter.isEmpty() ? QString() : QStringLiteral(" Where ") + filter),
        conditionArguments());
    rowCount_ = rs.integer(0);
    hasMore_ = false;
}

const DataCell& DataTable::cell(int row, int column) {
    static const DataCell kEmpty;
    if (row < 0 || row >= rowCount_ || column < 0 || column >= columnCount()) {
        return kEmpty;
    }
    const int page = row / kPageRows;
    auto known = pages_.find(page);
    if (known == pages_.end()) {
        if (hasFailed_) {
            return kEmpty;
        }
        std::vector<Row> rows;
        if (!attempt([&] { rows = readPage(page); })) {
            hasFailed_ = true;
            hasMore_ = false;
            return kEmpty;
        }
        if (pages_.size() >= kMostPages) {
            // The one farthest from what is looked at.
            const bool isFirst = page - pages_.begin()->first > pages_.rbegin()->first - page;
            pages_.erase(isFirst ? pages_.begin() : std::prev(pages_.end()));
        }
        known = pages_.emplace(page, std::move(rows)).first;
    }
    const auto& rows = known->second;
    const auto place = static_cast<std::size_t>(row % kPageRows);
    return place < rows.size() && !rows[place].empty() ? rows[place][static_cast<size_t>(column)]
                                                       : kEmpty;
}

std::vector<DataTable::Row> DataTable::readPage(int page) {
    const int first = page * kPageRows;
    const int count = std::min(kPageRows, rowCount_ - first);
    return rowNumber_.isEmpty() ? readPageAt(first, count) : readNumberedPage(first, count);
}

/// The columns to read, NULL in place of those that are not shown.
QString DataTable::shownColumns() const {
    QStringList names;
    for (const Column& column : columns_) {
        names.append(column.isShown ? quoted(column.name) : QStringLiteral("Null"));
    }
    return names.join(u',');
}

std::vector<DataTable::Row> DataTable::readNumberedPage(int first, int count) {
    QHash<qint64, int> places;
    QStringList numbers;
    for (int place = 0; place < count; ++place) {
        const qint64 number = numbers_[static_cast<std::size_t>(first + place)];
        places.insert(number, place);
        numbers.append(QString::number(number));
    }
    const QString query = QStringLiteral("Select %1,").arg(rowNumber_) + shownColumns() +
                          QStringLiteral(" From ") + table_ + QStringLiteral(" Where ") +
                          rowNumber_ + QStringLiteral(" In (") + numbers.join(u',') + u')';
    std::vector<Row> rows(static_cast<std::size_t>(count));
    for (auto rs = connection_->query(query); !rs.atEnd(); rs.moveNext()) {
        rows[static_cast<std::size_t>(places.value(rs.integer64(0)))] = readRow(rs, 1);
    }
    return rows;
}

std::vector<DataTable::Row> DataTable::readPageAt(int first, int count) {
    const QString filter = condition();
    const QString query = QStringLiteral("Select ") + shownColumns() + QStringLiteral(" From ") +
                          table_ +
                          (filter.isEmpty() ? QString() : QStringLiteral(" Where ") + filter) +
                          order() + QStringLiteral(" Limit %1 Offset %2").arg(count).arg(first);
    std::vector<Row> rows;
    for (auto rs = connection_->query(query, conditionArguments()); !rs.atEnd(); rs.moveNext()) {
        rows.push_back(readRow(rs, 0));
    }
    return rows;
}

DataTable::Row DataTable::readRow(const data::Recordset& rs, int firstColumn) const {
    Row row(columns_.size());
    for (std::size_t i = 0; i < row.size(); ++i) {
        const int column = firstColumn + static_cast<int>(i);
        switch (rs.valueType(column)) {
            case data::ValueType::Integer:
            case data::ValueType::Floating:
                row[i] = {rs.text(column), true};
                break;
            case data::ValueType::Text:
                row[i].text = rs.text(column, kTextLimit + 1);
                break;
            case data::ValueType::Null:
            case data::ValueType::Binary:
                break;
        }
    }
    return row;
}

std::optional<qint64> DataTable::numberOf(int row) const {
    if (row < 0 || row >= static_cast<int>(numbers_.size())) {
        return std::nullopt;
    }
    return numbers_[static_cast<std::size_t>(row)];
}

std::optional<int> DataTable::rowWithNumber(qint64 number) {
    while (hasMore_ && (numbers_.empty() || numbers_.back() < number)) {
        loadMore();
    }
    const auto found = std::ranges::lower_bound(numbers_, number);
    if (found == numbers_.end() || *found != number) {
        return std::nullopt;
    }
    return static_cast<int>(found - numbers_.begin());
}

std::optional<DataTable::Place> DataTable::find(const QString& value) {
    QStringList parts;
    for (const Column& column : columns_) {
        if (column.isShown) {
            parts.append(quoted(column.name) + QStringLiteral(" = ?1"));
        }
    }
    if (rowNumber_.isEmpty() || parts.isEmpty() || value.isEmpty()) {
        return std::nullopt;
    }
    std::optional<qint64> number;
    attempt([&] {
        const data::Recordset rs =
            connection_->query(QStringLiteral("Select %1 From %2 Where ").arg(rowNumber_, table_) +
                                   parts.join(QStringLiteral(" Or ")) +
                                   QStringLiteral(" Order By %1 Limit 1").arg(rowNumber_),
                               {value});
        if (!rs.atEnd()) {
            number = rs.integer64(0);
        }
    });
    const std::optional<int> row = number ? rowWithNumber(*number) : std::nullopt;
    if (!row) {
        return std::nullopt;
    }
    int found = -1;
    for (int column = columnCount() - 1; column >= 0; --column) {
        found = cell(*row, column).text == value ? column : found;
    }
    return found < 0 ? std::nullopt : std::optional(Place{*row, found});
}

}  // namespace varo
