#include "library/property_search.h"

#include "library/condition.h"
#include "platform/questions/held_messages.h"
#include "store/attempt.h"
#include "store/library_connection.h"

#include <QList>
#include <QSet>

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

void addTo(colLocateProp& located, const clsLocateProp& each) {
    bool added = false;
    located.Add(each.FilterID, each.NodeID, each.NodeType, each.PID, each.RootKey, QString(),
                added);
}

/// Adds to `located` those of `candidates` that have no condition or one that holds. Returns false
/// when one cannot be evaluated; all are added then.
bool addSuited(const colLocateProp& candidates, data::Connection& connection,
               PropertySource& properties, colLocateProp& located) {
    QList<qint32> filters;
    for (const clsLocateProp& candidate : candidates) {
        if (candidate.FilterID != 0) {
            filters.append(candidate.FilterID);
        }
    }
    Condition condition(connection, properties, filters);
    bool evaluated = true;
    bool holds = false;
    QSet<QString> unsuited;
    for (const clsLocateProp& candidate : candidates) {
        if (evaluated && candidate.FilterID != 0) {
            evaluated = condition.evaluate(candidate.FilterID, holds);
            if (evaluated && !holds) {
                unsuited.insert(candidate.Key);
            }
        }
    }
    for (const clsLocateProp& each : candidates) {
        if (!evaluated || !unsuited.contains(each.Key)) {
            addTo(located, each);
        }
    }
    return evaluated;
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
    colLocateProp candidates;
    for (const qint32 nodeType : {NodeTypeFormula, NodeTypeFolder}) {
        if (!collect(property, library.NodeKey, nodeType, connection, funcs, candidates)) {
            for (const clsLocateProp& each : candidates) {
                addTo(located, each);
            }
            return QStringLiteral("无法读取用户指定属性“%1”的信息！").arg(property);
        }
    }
    return addSuited(candidates, connection, properties_, located)
               ? QString()
               : QStringLiteral("无法形成合成后的查找条件！");
}

}  // namespace varo
