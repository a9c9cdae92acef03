#include "editing/formula_commands.h"

#include "control/formula_reader.h"
#include "control/work_files.h"
#include "editing/name_rules.h"
#include "editing/picture_files.h"
#include "platform/held_messages.h"
#include "platform/ui/node_view.h"
#include "store/attempt.h"
#include "store/keys.h"

#include <QFileInfo>

#include <utility>

namespace varo {

FormulaCommands::FormulaCommands(Form& form, ControlState& state, Questions& questions,
                                 LibraryTree& tree, FormulaList& list)
    : form_(form), state_(state), questions_(questions), tree_(tree), list_(list) {
    list.setRenamer(
        [this](const QString& key, const QString& name) { return storeName(key, name); });
}

/// Stores what is being edited and returns the key of the selected formula; "" when there is none
/// or something must be mended first. The tree then shows the folder that is listed.
QString FormulaCommands::selectedFormula() {
    if (!list_.storeEdits() || !state_.listsCurrentLibrary()) {
        return {};
    }
    tree_.selectListedNode();
    const QString key = list_.selectedKey();
    return state_.listedFormulas.contains(key) ? key : QString();
}

void FormulaCommands::newFormula() {
    if (!list_.storeEdits() || !tree_.showSelectedNode()) {
        return;
    }
    clsFormulaInfo formula;
    formula.FormulaName = QStringLiteral("新建公式");
    formula.FormulaPID = folderIdOf(form_.tvFolder->selectedKey());
    if (insertFormula(formula, state_.dbFuncs, state_) == InsertedFormula::Nothing) {
        questions_.inform(QStringLiteral("无法创建新的公式！"));
        return;
    }
    const QString key = list_.appendFormula(formula);
    form_.lvFormula->setFocus();
    list_.SelFormula(key);
    renameFormula();
}

bool FormulaCommands::copyFormula() {
    const QString key = selectedFormula();
    if (key.isEmpty()) {
        return true;
    }
    clsFormulaInfo copied = state_.listedFormulas.Item(key);
    HeldMessages messages;
    state_.clipboard.clear();
    copied.FormulaPicPath = copyPicture(copied, messages);
    state_.clipboard.key = key;
    state_.clipboard.kind = Clipboard::Formula;
    state_.clipboard.formulas.Add(copied);
    messages.show(questions_);
    return true;
}

/// Puts the formula's picture aside, from the library when its file has gone, and returns where it
/// is; "" when there is none.
QString FormulaCommands::copyPicture(const clsFormulaInfo& formula, HeldMessages& messages) {
    if (formula.FormulaPicType != PictureStored) {
        return {};
    }
    PictureCopy copy(copiedPictureFile(state_, formula.FormulaID));
    const bool copied =
        (copy.take(formula.FormulaPicPath) && copy.replaceTarget()) ||
        extractPicture(formula.FormulaID, copy.target(), state_.connection, messages);
    return copied ? copy.target() : QString();
}

bool FormulaCommands::pasteFormula() {
    if (!list_.storeEdits() || !tree_.showSelectedNode() || !state_.clipboard.holdsFormula()) {
        return true;
    }
    clsFormulaInfo formula = state_.clipboard.formulas.Item(1);
    formula.FormulaPID = folderIdOf(form_.tvFolder->selectedKey());
    HeldMessages messages;
    const InsertedFormula pasted = storeCopy(formula, messages);
    if (pasted == InsertedFormula::Nothing) {
        messages.inform(QStringLiteral("粘贴公式失败！"));
    } else {
        if (pasted == InsertedFormula::WithoutPicture) {
            messages.inform(QStringLiteral("粘贴公式的图形文件失败！"));
        }
        list_.SelFormula(list_.appendFormula(formula));
    }
    messages.show(questions_);
    return pasted == InsertedFormula::Whole;
}

/// Puts the formula into the library; it then has the picture file of the new one.
InsertedFormula FormulaCommands::storeCopy(clsFormulaInfo& formula, HeldMessages& messages) {
    clsDBFuncs dbFuncs(messages);
    InsertedFormula pasted = InsertedFormula::Nothing;
    const bool committed = attempt([&] {
        data::Transaction transaction(state_.connection);
        pasted = insertFormula(formula, dbFuncs, state_);
        transaction.commit();
    });
    const bool hasPicture = QFileInfo(std::exchange(formula.FormulaPicPath, {})).isFile();
    if (!committed) {
        return InsertedFormula::Nothing;
    }
    const QString file = listedPictureFile(state_, formula.FormulaID);
    if (hasPicture && pasted == InsertedFormula::Whole &&
        extractPicture(formula.FormulaID, file, state_.connection, messages)) {
        formula.FormulaPicPath = file;
    }
    return pasted;
}

void FormulaCommands::renameFormula() {
    if (!selectedFormula().isEmpty()) {
        form_.lvFormula->setFocus();
        form_.lvFormula->edit(form_.lvFormula->selectedIndex());
    }
}

bool FormulaCommands::storeName(const QString& key, const QString& name) {
    return storeLabel(*form_.lvFormula, questions_, formulaNameRules(), name, [&] {
        const bool stored = state_.listsCurrentLibrary() &&
                            state_.dbFuncs.RenameFormula(formulaIdOf(key), name, state_.connection);
        if (stored) {
            state_.listedFormulas.Item(key).FormulaName = name;
        }
        return stored;
    });
}

bool FormulaCommands::deleteFormula() {
    const QString key = selectedFormula();
    if (key.isEmpty()) {
        return true;
    }
    const QString name = state_.listedFormulas.Item(key).FormulaName;
    // The host may have turned to something else while the user was asked.
    if (!questions_.confirm(QStringLiteral("确实要删除公式-[%1]吗？").arg(name), Choice::YesNo) ||
        selectedFormula() != key) {
        return true;
    }
    const qint32 id = formulaIdOf(key);
    if (!state_.dbFuncs.DelFormula(id, state_.connection)) {
        questions_.inform(QStringLiteral("无法删除指定的公式！"));
        return false;
    }
    const bool complete =
        state_.dbFuncs.DelPropertyByNodeID(id, NodeTypeFormula, state_.connection);
    // The formula is gone even where its properties are not.
    list_.removeFormula(key);
    tree_.removeHighlight();
    showFirst();
    if (!complete) {
        questions_.inform(QStringLiteral("无法关联删除相关的属性！"));
    }
    return complete;
}

void FormulaCommands::showFirst() {
    if (list_.isEmpty()) {
        state_.formulaSelected = false;
        list_.showNone();
        list_.setCommandState(CommandState::NoFormula);
    } else {
        list_.SelFormula(list_.firstKey());
    }
}

bool FormulaCommands::moveFormula(MoveDirection direction) {
    const QString key = selectedFormula();
    const QModelIndex selected = form_.lvFormula->selectedIndex();
    const QModelIndex neighbour = selected.sibling(selected.row() + stepOf(direction), 0);
    if (key.isEmpty() || !neighbour.isValid()) {
        return true;
    }
    const QString node = form_.tvFolder->selectedIndex().data(Qt::EditRole).toString();
    const clsFormulaInfo& other = state_.listedFormulas.Item(neighbour.row() + 1);
    if (!state_.dbFuncs.ExchangeOrderID(formulaIdOf(key), other.FormulaID,
                                        QStringLiteral("Formula"), state_.connection)) {
        questions_.inform(QStringLiteral("移动公式失败！"));
        return false;
    }
    const bool listed = list_.ShowFolderFormulas(folderIdOf(state_.listedNodeKey));
    if (listed) {
        list_.SelFormula(key);
    } else {
        list_.showNothing();
    }
    list_.showMessages();
    if (!listed) {
        questions_.inform(QStringLiteral("无法显示节点“%1”下所有的公式！").arg(node));
    }
    return listed;
}

}  // namespace varo
