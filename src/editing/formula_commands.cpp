#include "editing/formula_commands.h"

#include "browse/label_edit.h"
#include "library/formulas.h"
#include "platform/ui/node_view.h"

namespace varo {

FormulaCommands::FormulaCommands(SelectionController& selection, FormulaList& list,
                                 CurrentLibrary& library, Clipboard& clipboard,
                                 Questions& questions)
    : selection_(selection),
      list_(list),
      library_(library),
      clipboard_(clipboard),
      questions_(questions) {
    list.model().setRenamer([this](qint32 id, const QString& name) { return storeName(id, name); });
}

/// Lists a formula that has just been inserted, and shows it.
void FormulaCommands::append(const clsFormulaInfo& formula) {
    // A damaged table assigns identifiers that are in use; the listed formula stays then.
    if (list_.model().find(formula.FormulaID) == nullptr) {
        list_.model().append(formula);
    }
    selection_.showFormula(formula.FormulaID);
    selection_.setFormulaSelected(true);
}

void FormulaCommands::newFormula() {
    const NodeId folder = selection_.nodeForCommand();
    if (!folder.isValid()) {
        return;
    }
    clsFormulaInfo formula;
    formula.FormulaName = QStringLiteral("新建公式");
    formula.FormulaPID = folder.parentId();
    if (!addFormula(library_, formula.FormulaPID, formula.FormulaName, formula.FormulaID)) {
        questions_.inform(QStringLiteral("无法创建新的公式！"));
        return;
    }
    append(formula);
    list_.editLabel(formula.FormulaID);
}

bool FormulaCommands::copyFormula() {
    const auto id = selection_.formulaForCommand();
    if (!id) {
        return true;
    }
    HeldMessages messages;
    clipboard_.captureFormula(library_, *list_.model().find(*id), messages);
    messages.show(questions_);
    return true;
}

bool FormulaCommands::pasteFormula() {
    const NodeId folder = selection_.nodeForCommand();
    if (!folder.isValid() || !clipboard_.holdsFormula()) {
        return true;
    }
    HeldMessages messages;
    const PastedFormula pasted = clipboard_.insertFormula(library_, folder.parentId(), messages);
    switch (pasted.inserted) {
        case InsertedFormula::None:
            messages.inform(QStringLiteral("粘贴公式失败！"));
            break;
        case InsertedFormula::WithoutPicture:
            messages.inform(QStringLiteral("粘贴公式的图形文件失败！"));
            [[fallthrough]];
        case InsertedFormula::Whole:
            append(pasted.formula);
            break;
    }
    messages.show(questions_);
    return pasted.inserted == InsertedFormula::Whole;
}

void FormulaCommands::renameFormula() {
    if (const auto id = selection_.formulaForCommand()) {
        list_.editLabel(*id);
    }
}

bool FormulaCommands::storeName(qint32 id, const QString& name) {
    return storeLabel(list_.view(), questions_, formulaNameRules(), name,
                      [&] { return varo::renameFormula(library_, id, name); });
}

bool FormulaCommands::deleteFormula() {
    const auto id = selection_.formulaForCommand();
    if (!id) {
        return true;
    }
    const NodeId folder = selection_.listedNode();
    const QString question =
        QStringLiteral("确实要删除公式-[%1]吗？").arg(list_.model().find(*id)->FormulaName);
    // The host may have changed the selection while the user was asked.
    if (!questions_.confirm(question, Choice::YesNo) || selection_.listedNode() != folder ||
        selection_.formula() != id) {
        return true;
    }
    const DeletedFormula deleted = varo::deleteFormula(library_, *id);
    if (deleted == DeletedFormula::None) {
        questions_.inform(QStringLiteral("无法删除指定的公式！"));
        return false;
    }
    // The formula is gone even where its properties are not.
    selection_.highlight().remove();
    list_.model().remove(*id);
    selection_.showFirstFormula();
    if (deleted == DeletedFormula::WithoutProperties) {
        questions_.inform(QStringLiteral("无法关联删除相关的属性！"));
    }
    return deleted == DeletedFormula::Whole;
}

bool FormulaCommands::moveFormula(MoveDirection direction) {
    const auto id = selection_.formulaForCommand();
    const auto neighbour = id ? list_.neighbour(*id, stepOf(direction)) : std::nullopt;
    if (!neighbour) {
        return true;
    }
    if (!exchangeFormulas(library_, *id, *neighbour)) {
        questions_.inform(QStringLiteral("移动公式失败！"));
        return false;
    }
    const QString folder = selection_.listedText();
    if (!selection_.relist(*id)) {
        questions_.inform(QStringLiteral("无法显示节点“%1”下所有的公式！").arg(folder));
        return false;
    }
    return true;
}

}  // namespace varo
