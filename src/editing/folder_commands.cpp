#include "editing/folder_commands.h"

#include "editing/folder_copies.h"
#include "editing/name_rules.h"
#include "platform/held_messages.h"
#include "platform/ui/node_view.h"
#include "platform/ui/wait_cursor.h"
#include "store/attempt.h"
#include "store/keys.h"

#include <algorithm>
#include <ranges>

namespace varo {

namespace {

/// Identifiers of a folder and all below it, each behind those below it.
std::vector<qint32> subtree(const QModelIndex& folder) {
    std::vector<qint32> ids;
    std::vector<QModelIndex> open{folder};
    while (!open.empty()) {
        const QModelIndex next = open.back();
        open.pop_back();
        ids.push_back(folderIdOf(ui::NodeView::keyOf(next)));
        for (int row = 0; row < next.model()->rowCount(next); ++row) {
            open.push_back(next.model()->index(row, 0, next));
        }
    }
    std::ranges::reverse(ids);
    return ids;
}

}  // namespace

FolderCommands::FolderCommands(Form& form, ControlState& state, Questions& questions,
                               LibraryTree& tree, FormulaList& list)
    : form_(form), state_(state), questions_(questions), tree_(tree), list_(list) {
    tree.setRenamer(
        [this](const QString& key, const QString& name) { return storeName(key, name); });
}

void FolderCommands::newFolder() {
    if (!list_.storeEdits() || !tree_.showSelectedNode()) {
        return;
    }
    const QString selected = form_.tvFolder->selectedKey();
    const QString name = QStringLiteral("新建公式夹");
    const qint32 parentID = folderIdOf(selected);
    qint32 id = 0;
    if (tree_.levelsBelow(selected) == 0 ||
        !state_.dbFuncs.AddNewFolder(parentID, name, id, state_.connection)) {
        questions_.inform(QStringLiteral("无法创建新的公式夹！"));
        return;
    }
    FolderRows added;
    added.add(id, parentID, 0, name);
    if (tree_.selectNode(append(selected, std::move(added)))) {
        renameFolder();
    }
}

/// Shows new folders below a node, the first of them with the others in it, and returns its key.
QString FolderCommands::append(const QString& parentKey, FolderRows added) {
    const QString rootKey = libraryKeyOf(parentKey);
    for (const FolderRows::Row& row : added.rows()) {
        if (!state_.folders.contains(folderKey(row.id, rootKey))) {
            bool success = false;
            state_.folders.Add(row.id, added.name(row).toString(), state_.currentLibraryPath,
                               state_.currentLibraryName, rootKey, row.parentId, QString(),
                               success);
        }
    }
    return tree_.appendFolder(parentKey, std::move(added));
}

bool FolderCommands::copyFolder() {
    if (!list_.storeEdits() || !tree_.showSelectedNode()) {
        return true;
    }
    const QModelIndex selected = form_.tvFolder->selectedIndex();
    HeldMessages messages;
    const bool copied =
        isFolderKey(ui::NodeView::keyOf(selected)) && captureFolders(selected, state_, messages);
    if (!copied) {
        messages.inform(QStringLiteral("无法读取节点信息，不能进行复制操作！"));
    }
    messages.show(questions_);
    return copied;
}

bool FolderCommands::pasteFolders() {
    if (!list_.storeEdits() || !tree_.showSelectedNode()) {
        return true;
    }
    const QString target = form_.tvFolder->selectedKey();
    const bool withSubfolders =
        state_.clipboard.folders.Count() > 1 &&
        questions_.confirm(QStringLiteral("复制子公式夹吗？"), Choice::YesNo);
    // The host may have turned to something else while the user was asked.
    if (form_.tvFolder->selectedKey() != target || !tree_.isOfCurrentLibrary(target)) {
        return true;
    }
    HeldMessages messages;
    const bool complete = pasteBelow(target, withSubfolders, messages);
    if (!complete) {
        messages.inform(QStringLiteral("粘贴公式夹失败！"));
    }
    messages.show(questions_);
    return complete;
}

bool FolderCommands::pasteBelow(const QString& target, bool withSubfolders,
                                HeldMessages& messages) {
    const ui::clsWaitCursor waiting;
    PastedFolders pasted = insertClipboardFolders(folderIdOf(target), withSubfolders,
                                                  tree_.levelsBelow(target), state_, messages);
    if (!pasted.rows.rows().empty()) {
        append(target, std::move(pasted.rows));
        tree_.makeSelectedCurrent();
    }
    return pasted.complete;
}

void FolderCommands::renameFolder() {
    if (!list_.storeEdits() || !tree_.showSelectedNode()) {
        return;
    }
    const QModelIndex selected = form_.tvFolder->selectedIndex();
    if (isFolderKey(ui::NodeView::keyOf(selected))) {
        form_.tvFolder->setFocus();
        form_.tvFolder->edit(selected);
    }
}

bool FolderCommands::storeName(const QString& key, const QString& name) {
    return storeLabel(*form_.tvFolder, questions_, folderNameRules(), name, [&] {
        const bool stored = tree_.isOfCurrentLibrary(key) &&
                            state_.dbFuncs.RenameFolder(folderIdOf(key), name, state_.connection);
        if (stored && state_.folders.contains(key)) {
            state_.folders.Item(key).NodeName = name;
        }
        return stored;
    });
}

bool FolderCommands::deleteFolder() {
    if (!list_.storeEdits() || !tree_.showSelectedNode()) {
        return true;
    }
    const QModelIndex selected = form_.tvFolder->selectedIndex();
    const QString key = ui::NodeView::keyOf(selected);
    if (!isFolderKey(key)) {
        return true;
    }
    const QString parentKey = ui::NodeView::keyOf(selected.parent());
    const QString rootKey = libraryKeyOf(key);
    const QString name = selected.data(Qt::EditRole).toString();
    // The host may have turned to something else while the user was asked.
    if (!questions_.confirm(QStringLiteral("确实要删除公式夹-[%1]吗？").arg(name), Choice::YesNo) ||
        form_.tvFolder->selectedKey() != key || !tree_.isOfCurrentLibrary(key)) {
        return true;
    }
    const Deletion deletion = deleteFromLibrary(subtree(form_.tvFolder->selectedIndex()));
    // From the top, so that a whole subtree goes in one step.
    for (const qint32 folder : deletion.gone | std::views::reverse) {
        forget(folder, rootKey);
        tree_.removeFolder(folderKey(folder, rootKey));
    }
    if (deletion.gone.contains(folderIdOf(key))) {
        list_.clear();
        tree_.selectNode(parentKey);
    } else if (deletion.committed) {
        // The step that failed may have been one behind the deletion of the listed formulas.
        tree_.selectNode(key);
    }
    if (!deletion.complete) {
        questions_.inform(QStringLiteral("删除公式夹失败！"));
    }
    return deletion.complete;
}

FolderCommands::Deletion FolderCommands::deleteFromLibrary(const std::vector<qint32>& folders) {
    const ui::clsWaitCursor waiting;
    Deletion deletion;
    try {
        data::Transaction transaction(state_.connection);
        const auto failed = std::ranges::find_if_not(
            folders, [&](qint32 folder) { return deleteOne(folder, deletion.gone); });
        transaction.commit();
        deletion.committed = true;
        deletion.complete = failed == folders.end();
    } catch (const data::Error&) {
        return {};
    }
    return deletion;
}

bool FolderCommands::deleteOne(qint32 folder, QList<qint32>& gone) {
    clsDBFuncs& funcs = state_.dbFuncs;
    data::Connection& connection = state_.connection;
    std::vector<qint32> formulas;
    data::Recordset rs;
    const bool read = funcs.GetFormulaByPID(folder, rs, connection) && attempt([&] {
                          const int id = rs.column(u"ID");
                          for (; !rs.atEnd(); rs.moveNext()) {
                              formulas.push_back(rs.integer(id));
                          }
                      });
    rs.close();
    if (!read) {
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
    gone.append(folder);
    return funcs.DelPropertyByNodeID(folder, NodeTypeFolder, connection);
}

void FolderCommands::forget(qint32 folder, const QString& rootKey) {
    const QString key = folderKey(folder, rootKey);
    if (state_.folders.contains(key)) {
        state_.folders.Remove(key);
    }
}

bool FolderCommands::moveFolder(MoveDirection direction) {
    if (!list_.storeEdits() || !tree_.showSelectedNode()) {
        return true;
    }
    const QModelIndex selected = form_.tvFolder->selectedIndex();
    const QModelIndex neighbour = selected.sibling(selected.row() + stepOf(direction), 0);
    const QString key = ui::NodeView::keyOf(selected);
    if (!isFolderKey(key) || !neighbour.isValid()) {
        return true;
    }
    const QString parentKey = ui::NodeView::keyOf(selected.parent());
    Exchanged now;
    const QString failure =
        exchange(folderIdOf(key), folderIdOf(ui::NodeView::keyOf(neighbour)), now);
    if (!failure.isEmpty()) {
        questions_.inform(failure);
        return false;
    }
    tree_.replaceFolders(parentKey, std::move(now.rows), !now.propertiesRead);
    tree_.markProperties(libraryKeyOf(key), now.withProperty);
    tree_.selectNode(key);
    if (!now.propertiesRead) {
        questions_.inform(QStringLiteral("无法读取“属性”信息！"));
    }
    return true;
}

/// In one piece, so that a tree that cannot be read again is still true.
QString FolderCommands::exchange(qint32 folder, qint32 neighbour, Exchanged& now) {
    const QString notExchanged = QStringLiteral("移动公式夹失败！");
    try {
        data::Transaction transaction(state_.connection);
        if (!state_.dbFuncs.ExchangeOrderID(folder, neighbour, QStringLiteral("Tree"),
                                            state_.connection)) {
            return notExchanged;
        }
        if (!tree_.readFolders(now.rows)) {
            return QStringLiteral("刷新公式夹树节点失败！");
        }
        now.propertiesRead = tree_.readFoldersWithProperty(now.withProperty);
        transaction.commit();
    } catch (const data::Error&) {
        return notExchanged;
    }
    return {};
}

}  // namespace varo
