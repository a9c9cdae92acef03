#include "editing/folder_commands.h"

#include "browse/label_edit.h"
#include "library/folders.h"
#include "library/properties.h"
#include "platform/ui/node_view.h"
#include "platform/ui/wait_cursor.h"

#include <algorithm>
#include <ranges>

namespace varo {

FolderCommands::FolderCommands(SelectionController& selection, LibraryTree& tree,
                               CurrentLibrary& library, Clipboard& clipboard, Questions& questions)
    : selection_(selection),
      tree_(tree),
      library_(library),
      clipboard_(clipboard),
      questions_(questions) {
    tree.model().setRenamer(
        [this](const NodeId& folder, const QString& name) { return storeName(folder, name); });
}

void FolderCommands::newFolder() {
    const NodeId parent = selection_.nodeForCommand();
    if (!parent.isValid()) {
        return;
    }
    const QString name = QStringLiteral("新建公式夹");
    qint32 id = 0;
    if (tree_.levelsBelow(parent) == 0 || !addFolder(library_, parent.parentId(), name, id)) {
        questions_.inform(QStringLiteral("无法创建新的公式夹！"));
        return;
    }
    FolderRows added;
    added.add(id, parent.parentId(), 0, name);
    const NodeId folder = tree_.appendFolders(parent, std::move(added));
    if (selection_.showNode(folder)) {
        tree_.editLabel(folder);
    }
}

bool FolderCommands::copyFolder() {
    const NodeId folder = selection_.nodeForCommand();
    if (!folder.isFolder()) {
        return true;
    }
    HeldMessages messages;
    const bool copied = [&] {
        const ui::clsWaitCursor waiting;
        return clipboard_.captureFolders(library_, *folder.folder, messages);
    }();
    if (!copied) {
        messages.inform(QStringLiteral("无法读取节点信息，不能进行复制操作！"));
    }
    messages.show(questions_);
    return copied;
}

bool FolderCommands::pasteFolders() {
    const NodeId target = selection_.nodeForCommand();
    if (!target.isValid()) {
        return true;
    }
    const bool withSubfolders =
        clipboard_.holdsSubfolders() &&
        questions_.confirm(QStringLiteral("复制子公式夹吗？"), Choice::YesNo);
    // The host may have changed the selection while the user was asked.
    if (!selection_.isSelected(target)) {
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

bool FolderCommands::pasteBelow(const NodeId& target, bool withSubfolders, HeldMessages& messages) {
    const ui::clsWaitCursor waiting;
    PastedFolders pasted = clipboard_.insertFolders(library_, target.parentId(), withSubfolders,
                                                    tree_.levelsBelow(target), messages);
    if (!pasted.rows.isEmpty()) {
        tree_.appendFolders(target, std::move(pasted.rows));
        selection_.makeNodeCurrent();
    }
    return pasted.complete;
}

void FolderCommands::renameFolder() {
    const NodeId folder = selection_.nodeForCommand();
    if (folder.isFolder()) {
        tree_.editLabel(folder);
    }
}

bool FolderCommands::storeName(const NodeId& folder, const QString& name) {
    return storeLabel(tree_.view(), questions_, folderNameRules(), name, [&] {
        return folder.library == library_.number() &&
               varo::renameFolder(library_, *folder.folder, name);
    });
}

bool FolderCommands::deleteFolder() {
    const NodeId folder = selection_.nodeForCommand();
    if (!folder.isFolder()) {
        return true;
    }
    const NodeId parent = tree_.parentOf(folder);
    const QString question = QStringLiteral("确实要删除公式夹-[%1]吗？").arg(tree_.text(folder));
    // The host may have changed the selection while the user was asked.
    if (!questions_.confirm(question, Choice::YesNo) || !selection_.isSelected(folder)) {
        return true;
    }
    const SubtreeDeletion deletion = [&] {
        const ui::clsWaitCursor waiting;
        return deleteSubtree(library_, *folder.folder);
    }();
    // From the top, so that a whole subtree goes in one step.
    for (const qint32 gone : deletion.gone | std::views::reverse) {
        tree_.removeFolder({folder.library, gone});
    }
    if (!tree_.contains(folder)) {
        selection_.showNode(parent);
    } else if (deletion.committed) {
        // The step that failed may have been one behind the deletion of the listed formulas.
        selection_.showNode(folder);
    }
    if (!deletion.complete) {
        questions_.inform(QStringLiteral("删除公式夹失败！"));
    }
    return deletion.complete;
}

bool FolderCommands::moveFolder(MoveDirection direction) {
    const NodeId folder = selection_.nodeForCommand();
    const NodeId neighbour = tree_.neighbour(folder, stepOf(direction));
    if (!folder.isFolder() || !neighbour.isFolder()) {
        return true;
    }
    FolderOrder order;
    const QString failure = exchangeFolders(library_, *folder.folder, *neighbour.folder, order);
    if (!failure.isEmpty()) {
        questions_.inform(failure);
        return false;
    }
    tree_.replaceFolders(tree_.parentOf(folder), std::move(order.rows), !order.propertiesRead);
    tree_.markProperties(folder.library, order.withProperty);
    selection_.showNode(folder);
    if (!order.propertiesRead) {
        questions_.inform(propertiesNotReadMessage());
    }
    return true;
}

}  // namespace varo
