#include "library/property_search.h"

#include "library/condition.h"
#include "platform/questions/held_messages.h"
#include "store/attempt.h"
#include "store/library_connection.h"

#include <QStringList>

namespace varo {

namespace {

bool collect(const QString& property, const QString& libraryKey, qint32 nodeType,
             data::Connection& connection, clsDBFuncs& funcs, colLocateProp& located) {
    data::Recordset rs;
    return funcs.GetLocateInfoByPropName(property, nodeType, rs, connection) && attempt([&] {
               for (; !rs.atEnd(); rs.moveNext()) {
                   const qint32 filterID = rs.integer(u"FilterID");
                   const qint32 nodeID = rs.integer(u"NodeID");
                   const qint32 parentID = nodeType == NodeTypeFormula ? rs.integer(u"PID") : 0;
                   if (located.Find(filterID, nodeID, nodeType, libraryKey) == nullptr) {
                       bool added = false;
                       located.Add(filterID, nodeID, nodeType, parentID, libraryKey, QString(),
                                   added);
                   }
               }
           });
}

/// Removes what has a condition that does not hold. Returns false when one cannot be evaluated.
bool filter(const QString& libraryKey, Condition& condition, colLocateProp& located) {
    QStringList unsuited;
    bool holds = false;
    for (const clsLocateProp& candidate : located) {
        if (candidate.RootKey != libraryKey || candidate.FilterID == 0) {
            continue;
        }
        if (!condition.evaluate(candidate.FilterID, holds)) {
            return false;
        }
        if (!holds) {
            unsuited.append(candidate.Key);
        }
    }
    for (const QString& key : unsuited) {
        located.Remove(key);
    }
    return true;
}

}  // namespace

QString PropertySearch::run(const QString& property, colLocateProp& located) {
    located.Clear();
    QString failure;
    for (const clsFormulaDB& library : libraries_) {
        failure = search(property, library, located);
        if (!failure.isEmpty()) {
            break;
        }
    }
    return failure;
}

QString PropertySearch::search(const QString& property, const clsFormulaDB& library,
                               colLocateProp& located) {
    HeldMessages none;  // reading properties shows nothing
    clsDBFuncs funcs(none);
    data::Connection connection;
    if (!ConnectLibrary(library.FormulaDBPath, library.FormulaDBName, connection, QString())) {
        return QStringLiteral("无法打开用户选择的数据库！");
    }
    for (const qint32 nodeType : {NodeTypeFormula, NodeTypeFolder}) {
        if (!collect(property, library.NodeKey, nodeType, connection, funcs, located)) {
            return QStringLiteral("无法读取用户指定属性“%1”的信息！").arg(property);
        }
    }
    Condition condition(connection, funcs, properties_);
    return filter(library.NodeKey, condition, located)
               ? QString()
               : QStringLiteral("无法形成合成后的查找条件！");
}

}  // namespace varo
