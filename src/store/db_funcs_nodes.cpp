#include "store/db_funcs.h"
#include "store/library_structure.h"
#include "store/row_order.h"
#include "store/statements.h"

#include <optional>

namespace varo {

namespace {

// Pic is left out: listing it would read all bytes of every picture. A picture is read through its
// field.
const auto kFormulaColumns = QStringLiteral("ID,Name,Formula,Memo,PicType,PID,OrderID");

QString formulas(const QString& clauses) {
    return QStringLiteral("Select %1 From Formula %2").arg(kFormulaColumns, clauses);
}

QString folders(const QString& clauses) {
    return QStringLiteral("Select * From Tree ") + clauses;
}

// The rows below `PID` in their order. Where no index serves that, row numbers are sorted instead
// of whole rows: in a damaged file many rows can hold one long text. Without the limit SQLite would
// sort what the outer statement reads.
QString childrenInOrder(const QString& table, const QString& columns) {
    return QStringLiteral(
               "Select %2 From (Select rowid As SortedRow From %1 Where PID = ? "
               "Order By OrderID,rowid Limit -1) Cross Join %1 On %1.rowid = SortedRow")
        .arg(table, columns);
}

// `text` as a pattern that it alone is contained in: it has no wildcards of its own.
QString containsPattern(QString text) {
    text.replace(u'\\', QStringLiteral("\\\\"));
    text.replace(u'%', QStringLiteral("\\%"));
    text.replace(u'_', QStringLiteral("\\_"));
    return u'%' + text + u'%';
}

struct Comparison {
    QString clause;
    QString value;
};

// How a find operation compares `column`; nothing for an unknown mode.
std::optional<Comparison> comparison(const QString& column, const QString& text, int mode) {
    switch (mode) {
        case FindContains:
            return Comparison{QStringLiteral("Where %1 Like ? Escape '\\'").arg(column),
                              containsPattern(text)};
        case FindEquals:
            return Comparison{QStringLiteral("Where %1 = ?").arg(column), text};
        default:
            return std::nullopt;
    }
}

using Listing = QString (*)(const QString& clauses);

bool find(Listing listing, const QString& column, const QString& text, data::Recordset& rs,
          data::Connection& conn, int mode) {
    const auto compared = comparison(column, text, mode);
    if (!compared) {
        rs.close();
        return false;
    }
    return list(rs, conn, listing(compared->clause), {compared->value});
}

bool show(const Statement& statement, data::Recordset& rs, data::Connection& conn) {
    return list(rs, conn, statement.text,
                data::Arguments(statement.values.cbegin(), statement.values.cend()));
}

bool opens(data::Connection& conn, const QString& statement) {
    data::Recordset rs;
    return list(rs, conn, statement);
}

// Statement that inserts a row of `table` behind its siblings, with values for `columns` and, at
// last, the parent. It fails where that would need an order number beyond 32 bits: the Abs() of
// this number is an error.
QString insertLastInto(const QString& table, const QString& columns) {
    const auto parent = static_cast<int>(columns.count(u',')) + 2;
    return QStringLiteral(
               "Insert Into %1(%2,PID,OrderID) Values(%3?%4,(Select Case "
               "When Max(OrderID) Is Null Then 1 "
               "When Max(OrderID) Between -2147483648 And 2147483646 "
               "Then Cast(Max(OrderID) As Integer)+1 "
               "Else Abs(-9223372036854775807-1) End From %1 Where PID=?%4))")
        .arg(table, columns, QStringLiteral("?,").repeated(parent - 1))
        .arg(parent);
}

// Runs a statement of insertLastInto() and takes the identifier that the row was given. The
// transaction takes the row back when that is beyond 32 bits: nothing could refer to it.
bool insertLast(data::Connection& conn, const QString& table, const QString& statement,
                const data::Arguments& values, qint32 PID, qint32& newID) {
    return attempt([&] {
        data::Transaction transaction(conn);
        if (!change(conn, statement, values)) {
            renumberSiblings(table, PID, conn);
            conn.execute(statement, values);
        }
        const qint32 id = conn.lastInsertedId();
        transaction.commit();
        newID = id;
    });
}

}  // namespace

bool clsDBFuncs::CheckNewDB(data::Connection& conn) {
    bool keeps = false;
    return opens(conn, QStringLiteral("Select ID,Name,Formula,Memo,Pic,PicType,PID,OrderID "
                                      "From Formula Limit 1")) &&
           opens(conn, QStringLiteral("Select VarName,Value,VarSourceType,VarMemo "
                                      "From RecentVar Limit 1")) &&
           opens(conn, QStringLiteral("Select ID,Name,PID,OrderID From Tree Limit 1")) &&
           attempt([&] { keeps = keepsRows(conn); }) && keeps;
}

// Listing

bool clsDBFuncs::GetChildFormulaNode(qint32 PID, data::Recordset& rs, data::Connection& conn) {
    return list(rs, conn, childrenInOrder(QStringLiteral("Tree"), QStringLiteral("Tree.*")), {PID});
}

bool clsDBFuncs::GetFormulaByPID(qint32 PID, data::Recordset& rs, data::Connection& conn) {
    return list(rs, conn, childrenInOrder(QStringLiteral("Formula"), kFormulaColumns), {PID});
}

bool clsDBFuncs::GetFormulaByID(qint32 ID, data::Recordset& rs, data::Connection& conn) {
    return list(rs, conn, formulas(QStringLiteral("Where ID = ? Order By ID")), {ID});
}

bool clsDBFuncs::GetNodeInfo(data::Recordset& rs, data::Connection& conn) {
    return list(rs, conn, folders({}));
}

bool clsDBFuncs::FindShowFolder(const Statement& statement, data::Recordset& rs,
                                data::Connection& conn) {
    return show(statement, rs, conn);
}

bool clsDBFuncs::FindShowFormula(const Statement& statement, data::Recordset& rs,
                                 data::Connection& conn) {
    return show(statement, rs, conn);
}

bool clsDBFuncs::GetFormulaByOrder(const QString& orderClause, data::Recordset& rs,
                                   data::Connection& conn) {
    QString hasPicture;
    return attempt([&] {
               hasPicture = conn.lengthOf(QStringLiteral("Formula"), QStringLiteral("Pic"));
           }) &&
           list(rs, conn,
                formulas(QStringLiteral("Where %1 > 0 Order By ").arg(hasPicture) + orderClause));
}

bool clsDBFuncs::FindFolder(const QString& text, data::Recordset& rs, data::Connection& conn,
                            int mode) {
    return find(folders, QStringLiteral("Name"), text, rs, conn, mode);
}

bool clsDBFuncs::FindFormula(const QString& text, data::Recordset& rs, data::Connection& conn,
                             int mode) {
    return find(formulas, QStringLiteral("Name"), text, rs, conn, mode);
}

bool clsDBFuncs::FindFormulaByMemo(const QString& text, data::Recordset& rs, data::Connection& conn,
                                   int mode) {
    return find(formulas, QStringLiteral("Memo"), text, rs, conn, mode);
}

// Changing

bool clsDBFuncs::RenameFolder(qint32 ID, const QString& name, data::Connection& conn) {
    return change(conn, QStringLiteral("Update Tree Set Name = ? Where ID = ?"), {name, ID});
}

bool clsDBFuncs::RenameFormula(qint32 ID, const QString& name, data::Connection& conn) {
    return change(conn, QStringLiteral("Update Formula Set Name = ? Where ID = ?"), {name, ID});
}

bool clsDBFuncs::DelFolder(qint32 ID, data::Connection& conn) {
    return change(conn, QStringLiteral("Delete From Tree Where ID = ?"), {ID});
}

bool clsDBFuncs::DelFormula(qint32 ID, data::Connection& conn) {
    return change(conn, QStringLiteral("Delete From Formula Where ID = ?"), {ID});
}

bool clsDBFuncs::DelFormulaByPID(qint32 PID, data::Connection& conn) {
    return change(conn, QStringLiteral("Delete From Formula Where PID = ?"), {PID});
}

bool clsDBFuncs::AddNewFolder(qint32 PID, const QString& name, qint32& newID,
                              data::Connection& conn) {
    static const QString statement = insertLastInto(QStringLiteral("Tree"), QStringLiteral("Name"));
    return insertLast(conn, QStringLiteral("Tree"), statement, {name, PID}, PID, newID);
}

bool clsDBFuncs::AddNewFormula(qint32 PID, const QString& name, const QString& formula,
                               const QString& memo, qint32 picType, qint32& newID,
                               data::Connection& conn) {
    static const QString statement =
        insertLastInto(QStringLiteral("Formula"), QStringLiteral("Name,Formula,Memo,PicType"));
    return insertLast(conn, QStringLiteral("Formula"), statement,
                      {name, formula, memo, picType, PID}, PID, newID);
}

bool clsDBFuncs::EditFormulaMemo(qint32 ID, const QString& memo, data::Connection& conn) {
    return change(conn, QStringLiteral("Update Formula Set Memo = ? Where ID = ?"), {memo, ID});
}

bool clsDBFuncs::EditFormulaExpression(qint32 ID, const QString& formula, data::Connection& conn) {
    return change(conn, QStringLiteral("Update Formula Set Formula = ? Where ID = ?"),
                  {formula, ID});
}

bool clsDBFuncs::EditAllFormulaInfo(qint32 ID, const QString& name, const QString& formula,
                                    const QString& memo, qint32 picType, data::Connection& conn) {
    conn.execute(
        QStringLiteral(
            "Update Formula Set Name = ?, Formula = ?, Memo = ?, PicType = ? Where ID = ?"),
        {name, formula, memo, picType, ID});
    return true;
}

bool clsDBFuncs::ExchangeOrderID(qint32 ID1, qint32 ID2, const QString& tableName,
                                 data::Connection& conn) {
    for (const QString& table : {QStringLiteral("Tree"), QStringLiteral("Formula")}) {
        if (table.compare(tableName, Qt::CaseInsensitive) == 0) {
            return attempt([&] {
                data::Transaction transaction(conn);
                exchangePlaces(table, ID1, ID2, conn);
                transaction.commit();
            });
        }
    }
    return false;
}

}  // namespace varo
