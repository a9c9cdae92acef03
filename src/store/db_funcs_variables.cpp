#include "store/db_funcs.h"
#include "store/statements.h"

namespace varo {

bool clsDBFuncs::GetVarInfo(data::Recordset& rs, data::Connection& conn) {
    return list(rs, conn, QStringLiteral("Select * From RecentVar"));
}

bool clsDBFuncs::GetVarInfoByVarName(const QString& varName, data::Recordset& rs,
                                     data::Connection& conn) {
    return list(rs, conn, QStringLiteral("Select * From RecentVar Where VarName = ?"), {varName});
}

bool clsDBFuncs::GetVarInfoOfFormula(const QString& varName, qint32 formulaID, data::Recordset& rs,
                                     data::Connection& conn) {
    // The file ignores the case of ASCII letters only, a formula that of all letters.
    return list(rs, conn,
                QStringLiteral("Select * From RecentVar "
                               "Where VarName In (?,?,?) And FormulaID In (?,0)"),
                {varName, varName.toLower(), varName.toUpper(), formulaID});
}

bool clsDBFuncs::GetVarInfoByFormulaID(qint32 formulaID, data::Recordset& rs,
                                       data::Connection& conn) {
    return list(rs, conn, QStringLiteral("Select * From RecentVar Where FormulaID In (?,0)"),
                {formulaID});
}

bool clsDBFuncs::GetVarMemoBySourceType(qint32 varSourceType, data::Recordset& rs,
                                        data::Connection& conn) {
    return list(rs, conn,
                QStringLiteral("Select Distinct VarMemo From RecentVar "
                               "Where VarSourceType = ? Order By VarMemo"),
                {varSourceType});
}

bool clsDBFuncs::AddNewVar(const QString& varName, qint32 formulaID, const QString& value,
                           data::Connection& conn) {
    return change(conn,
                  QStringLiteral("Insert Into RecentVar(VarName,FormulaID,[Value]) Values(?,?,?)"),
                  {varName, formulaID, value});
}

bool clsDBFuncs::EditFormulaVarValue(const QString& varName, qint32 formulaID, const QString& value,
                                     data::Connection& conn) {
    return change(
        conn,
        QStringLiteral("Update RecentVar Set [Value] = ? Where VarName = ? And FormulaID = ?"),
        {value, varName, formulaID});
}

bool clsDBFuncs::EditFormulaVarPara(const QString& varName, qint32 formulaID, qint32 varSourceType,
                                    const QString& varMemo, data::Connection& conn) {
    return change(conn,
                  QStringLiteral("Update RecentVar Set VarSourceType = ?, VarMemo = ? "
                                 "Where VarName = ? And FormulaID = ?"),
                  {varSourceType, varMemo, varName, formulaID});
}

bool clsDBFuncs::ChangeVarBelong(const QString& varName, qint32 oldFormulaID, qint32 newFormulaID,
                                 data::Connection& conn, const QString& value) {
    if (value.isEmpty()) {
        return change(conn,
                      QStringLiteral(
                          "Update RecentVar Set FormulaID = ? Where VarName = ? And FormulaID = ?"),
                      {newFormulaID, varName, oldFormulaID});
    }
    return change(conn,
                  QStringLiteral("Update RecentVar Set FormulaID = ?, [Value] = ? "
                                 "Where VarName = ? And FormulaID = ?"),
                  {newFormulaID, value, varName, oldFormulaID});
}

}  // namespace varo
