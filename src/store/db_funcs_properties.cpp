#include "store/db_funcs.h"
#include "store/statements.h"

namespace varo {

bool clsDBFuncs::GetProperty(qint32 nodeID, qint32 nodeType, data::Recordset& rs,
                             data::Connection& conn) {
    return list(rs, conn,
                QStringLiteral("Select * From Property Where NodeID = ? And NodeType = ? "
                               "Order By PropID"),
                {nodeID, nodeType});
}

bool clsDBFuncs::GetAllPropertyByType(qint32 nodeType, data::Recordset& rs,
                                      data::Connection& conn) {
    return list(rs, conn,
                QStringLiteral("Select * From Property Where NodeType = ? Order By PropID"),
                {nodeType});
}

bool clsDBFuncs::GetPropertyByType(qint32 nodeType, data::Recordset& rs, data::Connection& conn) {
    return GetAllPropertyByType(nodeType, rs, conn);
}

bool clsDBFuncs::AddProperty(qint32 propID, const QString& propName, qint32 filterID, qint32 nodeID,
                             qint32 nodeType, data::Connection& conn) {
    return change(conn,
                  QStringLiteral("Insert Into Property(PropID,PropName,FilterID,NodeID,NodeType) "
                                 "Values(?,?,?,?,?)"),
                  {propID, propName, filterID, nodeID, nodeType});
}

bool clsDBFuncs::RenProperty(qint32 propID, const QString& propName, qint32 nodeID, qint32 nodeType,
                             data::Connection& conn) {
    return change(conn,
                  QStringLiteral("Update Property Set PropName = ? "
                                 "Where PropID = ? And NodeID = ? And NodeType = ?"),
                  {propName, propID, nodeID, nodeType});
}

bool clsDBFuncs::EditRelation(qint32 propID, qint32 filterID, qint32 nodeID, qint32 nodeType,
                              data::Connection& conn) {
    return change(conn,
                  QStringLiteral("Update Property Set FilterID = ? "
                                 "Where PropID = ? And NodeID = ? And NodeType = ?"),
                  {filterID, propID, nodeID, nodeType});
}

bool clsDBFuncs::DelProperty(qint32 propID, qint32 nodeID, qint32 nodeType,
                             data::Connection& conn) {
    return change(
        conn,
        QStringLiteral("Delete From Property Where PropID = ? And NodeID = ? And NodeType = ?"),
        {propID, nodeID, nodeType});
}

bool clsDBFuncs::DelPropertyByNodeID(qint32 nodeID, qint32 nodeType, data::Connection& conn) {
    return change(conn, QStringLiteral("Delete From Property Where NodeID = ? And NodeType = ?"),
                  {nodeID, nodeType});
}

bool clsDBFuncs::GetLocateInfoByPropName(const QString& propName, qint32 nodeType,
                                         data::Recordset& rs, data::Connection& conn) {
    switch (nodeType) {
        case NodeTypeFolder:
            return list(rs, conn,
                        QStringLiteral("Select FilterID,NodeID,NodeType From Property "
                                       "Where PropName = ? And NodeType = ?"),
                        {propName, nodeType});
        case NodeTypeFormula:
            return list(rs, conn,
                        QStringLiteral("Select Property.FilterID As FilterID,"
                                       "Property.NodeID As NodeID,Property.NodeType As NodeType,"
                                       "Formula.PID As PID From Property,Formula "
                                       "Where Property.PropName = ? And Property.NodeType = ? "
                                       "And Property.NodeID = Formula.ID"),
                        {propName, nodeType});
        default:
            rs.close();
            return false;
    }
}

bool clsDBFuncs::GetResFilterCondByParentID(qint32 userID, qint32 parentID, data::Recordset& rs,
                                            data::Connection& conn) {
    return list(rs, conn,
                QStringLiteral("Select * From FilterCond Where UserID = ? And ParentID = ? "
                               "Order By ID"),
                {userID, parentID});
}

bool clsDBFuncs::GetResExpressions(qint32 filterID, qint32 expID, data::Recordset& rs,
                                   data::Connection& conn) {
    return list(rs, conn,
                QStringLiteral("Select * From FilterExpressions Where FilterID = ? And ExpID = ? "
                               "Order By ExpID"),
                {filterID, expID});
}

}  // namespace varo
