#include "library/property_names.h"

#include "platform/data/lock_check.h"
#include "platform/questions/held_messages.h"
#include "store/attempt.h"
#include "store/db_funcs.h"
#include "store/library_connection.h"

#include <QFileInfo>
#include <QSet>

namespace varo {

namespace {

/// Adds the texts of a column, but for blank ones and those that are in `names` already. Throws
/// data::Error.
void addNew(data::Recordset& rows, int column, QStringList& names) {
    QSet<QString> known(names.cbegin(), names.cend());
    for (; !rows.atEnd(); rows.moveNext()) {
        const QString text = rows.text(column);
        if (!text.trimmed().isEmpty() && !known.contains(text)) {
            known.insert(text);
            names.append(text);
        }
    }
}

bool addNames(data::Connection& connection, NodeType kind, QStringList& names) {
    HeldMessages none;  // reading properties shows nothing
    clsDBFuncs funcs(none);
    data::Recordset rows;
    return funcs.GetAllPropertyByType(kind, rows, connection) &&
           attempt([&] { addNew(rows, rows.column(u"PropName"), names); });
}

void addAskedNames(data::Connection& connection, QStringList& names) {
    for (const char* query : {"Select Distinct FieldName Collate Binary From FilterExpressions",
                              "Select Distinct VarMemo Collate Binary From RecentVar "
                              "Where VarSourceType = 1"}) {
        attempt([&] {
            data::Recordset rows = connection.query(QLatin1StringView(query));
            addNew(rows, 0, names);
        });
    }
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

QStringList askedNames(const colFormulaDB& libraries, data::Connection& open) {
    QStringList names;
    addAskedNames(open, names);
    data::Connection connection;
    for (const clsFormulaDB& library : libraries) {
        const QFileInfo file(library.FormulaDBPath + library.FormulaDBName);
        if (file != QFileInfo(open.path()) && !data::isLocked(file.filePath()) &&
            ConnectLibrary(library.FormulaDBPath, library.FormulaDBName, connection, QString())) {
            addAskedNames(connection, names);
        }
    }
    names.sort();
    return names;
}

}  // namespace varo
