#include "store/row_order.h"

#include "platform/data/error.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace varo {

namespace {

struct Place {
    data::Argument parent;  ///< null, or the number
    data::Argument order;
};

data::Argument numberOrNull(const data::Recordset& row, int column) {
    return row.isNull(column) ? data::Argument(nullptr) : data::Argument(row.integer64(column));
}

Place placeOf(const QString& table, qint32 ID, data::Connection& conn) {
    const data::Recordset row =
        conn.query(QStringLiteral("Select PID,OrderID From %1 Where ID = ?").arg(table), {ID});
    return {numberOrNull(row, 0), numberOrNull(row, 1)};
}

void setOrder(const QString& table, qint64 ID, const data::Argument& order,
              data::Connection& conn) {
    // A row that has the number already is not written again: it may hold a long picture.
    conn.execute(
        QStringLiteral("Update %1 Set OrderID = ? Where ID = ? And OrderID Is Not ?").arg(table),
        {order, ID, order});
}

/// The identifiers of the rows with this parent, in their order.
std::vector<qint64> siblings(const QString& table, const data::Argument& parent,
                             data::Connection& conn) {
    std::vector<qint64> ids;
    for (auto rows = conn.query(
             QStringLiteral("Select ID From %1 Where PID Is ? Order By OrderID,rowid").arg(table),
             {parent});
         !rows.atEnd(); rows.moveNext()) {
        ids.push_back(rows.integer64(0));
    }
    return ids;
}

void number(const QString& table, const std::vector<qint64>& ids, data::Connection& conn) {
    qint32 order = 0;
    for (const qint64 id : ids) {
        setOrder(table, id, ++order, conn);
    }
}

/// Whether the two rows, and no others of their parent, have these numbers, which are different and
/// fit 32 bits: then swapping the numbers exchanges the places.
bool numbersAreTheirOwn(const QString& table, qint32 ID1, qint32 ID2, const Place& place1,
                        const Place& place2, data::Connection& conn) {
    const data::Recordset rows =
        conn.query(QStringLiteral("Select Count(*), Count(Distinct OrderID), Sum(ID In (?,?)), "
                                  "Min(OrderID) >= ? And Max(OrderID) <= ? From %1 "
                                  "Where PID Is ? And OrderID In (?,?)")
                       .arg(table),
                   {ID1, ID2, std::numeric_limits<qint32>::min(),
                    std::numeric_limits<qint32>::max(), place1.parent, place1.order, place2.order});
    return rows.integer(0) == 2 && rows.integer(1) == 2 && rows.integer(2) == 2 &&
           rows.integer(3) == 1;
}

}  // namespace

void renumberSiblings(const QString& table, qint32 PID, data::Connection& conn) {
    number(table, siblings(table, PID, conn), conn);
}

void exchangePlaces(const QString& table, qint32 ID1, qint32 ID2, data::Connection& conn) {
    const Place place1 = placeOf(table, ID1, conn);
    const Place place2 = placeOf(table, ID2, conn);
    if (ID1 == ID2) {
        return;
    }
    if (place1.parent != place2.parent ||
        numbersAreTheirOwn(table, ID1, ID2, place1, place2, conn)) {
        setOrder(table, ID1, place2.order, conn);
        setOrder(table, ID2, place1.order, conn);
        return;
    }
    std::vector<qint64> ids = siblings(table, place1.parent, conn);
    const auto found1 = std::find(ids.begin(), ids.end(), ID1);
    const auto found2 = std::find(ids.begin(), ids.end(), ID2);
    if (found1 == ids.end() || found2 == ids.end()) {
        throw data::Error(
            QStringLiteral("an index of table %1 does not have all of its rows").arg(table));
    }
    std::iter_swap(found1, found2);
    number(table, ids, conn);
}

}  // namespace varo
