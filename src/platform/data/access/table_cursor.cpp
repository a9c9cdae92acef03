#include "platform/data/access/table_cursor.h"

#include "platform/data/access/index_key.h"
#include "platform/data/access/table_plan.h"

#include <algorithm>
#include <cmath>

namespace varo::access {

namespace {

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

}  // namespace

void TableCursor::find(RowPlace place) {
    row_.reset();
    place_ = place;
    const Page page = file_.page(place.page);
    const Bytes bytes(*page);
    if (static_cast<PageKind>(bytes.byte(0)) == PageKind::Data && ownerOf(bytes) == table_.page &&
        place.row < rowCount(file_.layout(), bytes)) {
        if (const auto found = findRow(file_, place)) {
            row_.emplace(file_.layout(), table_, found->page, found->bytes);
        }
    }
}

void TableCursor::filter(int plan, sqlite3_value** values) {
    rows_.reset();
    entries_.reset();
    last_.clear();
    row_.reset();
    switch (plan & kKind) {
        case kRowNumber: {
            const qint64 number = sqlite3_value_int64(values[0]);
            const RowPlace place = rowPlace(number);
            if (number >= 0 && rowNumber(place) == number && place.page < file_.pageCount()) {
                find(place);
            }
            break;
        }
        case kByIndex:
            filterByIndex(plan, values);
            break;
        default:
            rows_ = std::make_unique<RowScan>(file_, table_);
            next();
    }
}

void TableCursor::filterByIndex(int plan, sqlite3_value** values) {
    const Index& index = table_.indexes[static_cast<std::size_t>(plan >> kIndexShift)];
    const IndexColumn& first = index.columns.front();
    const Column& column = *table_.columnByNumber(first.column);
    hasLast_ = (plan & (kEqual | kAbove | kBelow)) != 0;
    if ((plan & kIs) != 0 && sqlite3_value_type(values[0]) == SQLITE_NULL) {
        last_ = nullKey(first.isDescending);
        beginAt(index, last_);
        return;
    }
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
    if (hasLast_) {
        appendNumberKey(column, first.isDescending, first.isDescending ? upper : lower, begin);
        appendNumberKey(column, first.isDescending, first.isDescending ? lower : upper, last_);
    }
    beginAt(index, begin);
}

/// Begins with the first entry of the index that is not before `first`.
void TableCursor::beginAt(const Index& index, const QByteArray& first) {
    entries_ = std::make_unique<IndexScan>(file_, index.root, first);
    next();
}

void TableCursor::next() {
    row_.reset();
    if (rows_ != nullptr) {
        if (const auto found = rows_->next()) {
            place_ = rows_->place();
            row_.emplace(file_.layout(), table_, found->page, found->bytes);
        }
        return;
    }
    while (entries_ != nullptr && !row_ && entries_->next() &&
           (!hasLast_ || entries_->key().left(last_.size()) <= last_)) {
        find(entries_->place());
    }
}

}  // namespace varo::access
