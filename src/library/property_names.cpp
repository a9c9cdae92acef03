#include "library/property_names.h"

#include "platform/questions/held_messages.h"
#include "store/attempt.h"
#include "store/db_funcs.h"
#include "store/library_connection.h"

#include <QSet>

namespace varo {

namespace {

bool addNames(data::Connection& connection, NodeType kind, QStringList& names) {
    HeldMessages none;  // reading properties shows nothing
    clsDBFuncs funcs(none);
    data::Recordset rows;
    QSet<QString> known(names.cbegin(), names.cend());
    return funcs.GetAllPropertyByType(kind, rows, connection) && attempt([&] {
               const int name = rows.column(u"PropName");
               for (; !rows.atEnd(); rows.moveNext()) {
                   const QString text = rows.text(name);
                   if (!text.isEmpty() && !known.contains(text)) {
                       known.insert(text);
                       names.append(text);
                   }
               }
           });
}

}  // namespace

PropertyNames readPropertyNames(const colFormulaDB& libraries) {
    PropertyNames names;
    data::Connection connection;
    for (const clsFormulaDB& library : libraries) {
        if (!ConnectLibrary(library.FormulaDBPath, library.FormulaDBName, connection, QString())) {
            names.failure = QStringLiteral("无法打开指定的数据库，不能进行查找操作！");
            break;
        }
        if (!addNames(connection, NodeTypeFolder, names.ofFolders) ||
            !addNames(connection, NodeTypeFormula, names.ofFormulas)) {
            names.failure = QStringLiteral("读取“属性”信息失败！");
            break;
        }
    }
    return names;
}

}  // namespace varo
