#include "library/folders.h"

#include "library/limits.h"
#include "library/properties.h"
#include "store/attempt.h"

#include <algorithm>
#include <ranges>

namespace varo {

namespace {

bool readIdentifiers(CurrentLibrary& library, qint32 folder, std::vector<qint32>& formulas) {
    data::Recordset rs;
    return library.funcs().GetFormulaByPID(folder, rs, library.connection()) && attempt([&] {
               const int id = rs.column(u"ID");
               for (; !rs.atEnd(); rs.moveNext()) {
                   formulas.push_back(rs.integer(id));
               }
           });
}

/// Deletes one folder with its formulas; adds it to `gone` once its row is.
bool deleteFolder(CurrentLibrary& library, qint32 folder, std::vector<qint32>& gone) {
    clsDBFuncs& funcs = library.funcs();
    data::Connection& connection = library.connection();
    std::vector<qint32> formulas;
    if (!readIdentifiers(library, folder, formulas)) {
        return false;
    }
    for (const qint32 formula : formulas) {
        if (!funcs.DelPropertyByNodeID(formula, NodeTypeFormula, connection)) {
            return false;
        }
    }
    if (!funcs.DelFormulaByPID(folder, connection) || !funcs.DelFolder(folder, connection)) {
        return false;
    }
    gone.push_back(folder);
    return funcs.DelPropertyByNodeID(folder, NodeTypeFolder, connection);
}

}  // namespace

bool readFolders(CurrentLibrary& library, FolderRows& rows) {
    data::Recordset rs;
    return library.funcs().GetNodeInfo(rs, library.connection()) && attempt([&] {
               const int id = rs.column(u"ID");
               const int name = rs.column(u"Name");
               const int parent = rs.column(u"PID");
               const int order = rs.column(u"OrderID");
               for (; !rs.atEnd(); rs.moveNext()) {
                   rows.add(rs.integer(id), rs.integer(parent), rs.integer64(order),
                            rs.text(name, kShownTextLimit));
               }
           });
}

bool addFolder(CurrentLibrary& library, qint32 parent, const QString& name, qint32& id) {
    return library.funcs().AddNewFolder(parent, name, id, library.connection());
}

bool renameFolder(CurrentLibrary& library, qint32 folder, const QString& name) {
    return library.funcs().RenameFolder(folder, name, library.connection());
}

SubtreeDeletion deleteSubtree(CurrentLibrary& library, qint32 folder) {
    SubtreeDeletion deletion;
    const bool ran = attempt([&] {
        data::Transaction transaction(library.connection());
        FolderRows rows;
        if (!readFolders(library, rows)) {
            return;
        }
        rows.sort();
        std::vector<qint32> subtree;
        for (const FolderRows::Row& row : rows.subtreeOf(folder)) {
            subtree.push_back(row.id);
        }
        if (subtree.empty()) {
            // Another program has deleted its row; its formulas may still be there.
            subtree.push_back(folder);
        }
        deletion.complete = std::ranges::all_of(subtree | std::views::reverse, [&](qint32 each) {
            return deleteFolder(library, each, deletion.gone);
        });
        transaction.commit();
        deletion.committed = true;
    });
    return ran ? deletion : SubtreeDeletion{};
}

QString exchangeFolders(CurrentLibrary& library, qint32 folder, qint32 neighbour,
                        FolderOrder& order) {
    const QString notExchanged = QStringLiteral("移动公式夹失败！");
    QString failure;
    // In one transaction, so that a tree that cannot be read again still shows the stored order.
    const bool ran = attempt([&] {
        data::Transaction transaction(library.connection());
        if (!library.funcs().ExchangeOrderID(folder, neighbour, QStringLiteral("Tree"),
                                             library.connection())) {
            failure = notExchanged;
            return;
        }
        if (!readFolders(library, order.rows)) {
            failure = QStringLiteral("刷新公式夹树节点失败！");
            return;
        }
        order.propertiesRead = readNodesWithProperty(library, NodeTypeFolder, order.withProperty);
        transaction.commit();
    });
    return ran ? failure : notExchanged;
}

}  // namespace varo
