#include "browse/selection_controller.h"

#include "platform/ui/node_view.h"
#include "platform/ui/wait_cursor.h"

#include <utility>

namespace varo {

SelectionController::SelectionController(LibraryTree& tree, FormulaList& list, FormulaPane& pane,
                                         CurrentLibrary& library, Questions& questions)
    : tree_(tree),
      list_(list),
      pane_(pane),
      library_(library),
      questions_(questions),
      highlight_(tree, list) {
    connect(&tree, &LibraryTree::nodeClicked, this, &SelectionController::selectNode);
    connect(&list, &FormulaList::formulaClicked, this, [this](qint32 id) {
        selectFormula(id);
        isFormulaSelected_ = isFormulaSelected_ || formula() == id;
    });
    connect(&list, &FormulaList::emptyClicked, this, &SelectionController::deselectFormula);
    connect(&pane, &FormulaPane::expressionStored, this, [this](qint32 id, const QString& text) {
        list_.model().update(id,
                             [&](clsFormulaInfo& formula) { formula.FormulaExpression = text; });
    });
    connect(&pane, &FormulaPane::memoStored, this, [this](qint32 id, const QString& text) {
        list_.model().update(id, [&](clsFormulaInfo& formula) { formula.FormulaMemo = text; });
    });
}

SelectionController::NodePlace SelectionController::findNode(const NodeId& node) {
    bool isRead = tree_.isUpToDate(node.library);
    if (!isRead) {
        const ui::clsWaitCursor waiting;
        highlight_.remove();
        isRead = tree_.readAnew(node.library, kNotOpened).isEmpty();
        if (isRead && listedNode_.library == node.library) {
            showNothing();
        }
    }
    if (tree_.contains(node)) {
        return NodePlace::Tree;
    }
    return isRead ? NodePlace::Gone : NodePlace::Unknown;
}

bool SelectionController::selectNode(const NodeId& node) {
    return storeEdits() && showNode(node);
}

void SelectionController::selectFormula(qint32 id) {
    if (storeEdits()) {
        showFormula(id);
    }
}

bool SelectionController::showNode(NodeId node, const QString& notOpened) {
    if (!tree_.contains(node)) {
        const QString failure = tree_.readUnread(node.library, notOpened);
        if (!tree_.contains(node)) {
            if (!failure.isEmpty()) {
                questions_.inform(failure);
            }
            return false;
        }
    }
    tree_.select(node);
    highlight_.remove();
    // The panel shows none of the formulas that are listed from now on.
    pane_.ClearFormulaPanel();
    HeldMessages messages;
    const bool opened = library_.open(node.library);
    tree_.noteOpening(node.library);
    if (opened && !node.isFolder()) {
        tree_.readAgain();
    }
    if (!opened || !list_.ShowFolderFormulas(node.parentId(), messages)) {
        showNothing();
        messages.inform(opened
                            ? QStringLiteral("无法读取节点“%1”下所有的公式！").arg(tree_.text(node))
                            : notOpened);
        messages.show(questions_);
        return false;
    }
    list_.view().setEnabled(true);
    listedNode_ = node;
    isFormulaSelected_ = false;
    if (list_.isEmpty()) {
        showEmptyPanel();
        makeNodeCurrent();
    } else {
        list_.select(list_.first());
        makeNodeCurrent();
        display(list_.first(), messages);
    }
    messages.show(questions_);
    return listedNode_ == node;
}

void SelectionController::showFormula(qint32 id) {
    highlight_.remove();
    if (list_.model().find(id) == nullptr) {
        return;
    }
    list_.select(id);
    current_ = id;
    setState(SelectionState::Formula);
    HeldMessages messages;
    Questions& questions = questions_;  // the host that is asked may destroy the control
    display(id, messages);
    messages.show(questions);
}

void SelectionController::display(qint32 id, HeldMessages& messages) {
    // A copy: the panel asks the host, who may have another folder listed meanwhile.
    const clsFormulaInfo formula = *list_.model().find(id);
    pane_.show(formula, messages);
}

void SelectionController::showFirstFormula() {
    isFormulaSelected_ = !list_.isEmpty();
    if (isFormulaSelected_) {
        showFormula(list_.first());
    } else {
        showEmptyPanel();
        setState(SelectionState::NoFormula);
    }
}

/// For a folder without formulas; tree and list stay enabled.
void SelectionController::showEmptyPanel() {
    pane_.ClearFormulaPanel();
    pane_.SetPanelState(SelectionState::Folder);
    tree_.view().setEnabled(true);
    list_.view().setEnabled(true);
}

void SelectionController::deselectFormula() {
    if (!storeEdits()) {
        return;
    }
    isFormulaSelected_ = false;
    list_.select(std::nullopt);
    SetSelectionState(SelectionState::NoFormula);
}

bool SelectionController::relist(qint32 id) {
    HeldMessages messages;
    pane_.ClearFormulaPanel();
    const bool listed = list_.ShowFolderFormulas(listedNode_.parentId(), messages);
    if (listed) {
        showFormula(id);
    } else {
        showNothing();
    }
    messages.show(questions_);
    return listed;
}

void SelectionController::showNothing() {
    list_.clear();
    listedNode_ = {};
    isFormulaSelected_ = false;
    SetSelectionState(SelectionState::NoFormula);
}

void SelectionController::SetSelectionState(SelectionState state) {
    pane_.ClearFormulaPanel();
    pane_.SetPanelState(state);
    setState(state);
}

bool SelectionController::storeEdits() {
    // All of them, whatever the first says: a label that stays open would be stored for what is
    // selected later.
    const bool folderStored = tree_.view().commitEdit();
    const bool formulaStored = list_.view().commitEdit();
    return pane_.storeEdits() && folderStored && formulaStored;
}

NodeId SelectionController::nodeForCommand() {
    if (!storeEdits()) {
        return {};
    }
    const NodeId selected = tree_.selectedNode();
    const bool isShown = selected.isValid() && (selected == listedNode_ || showNode(selected));
    return isShown ? selected : NodeId{};
}

std::optional<qint32> SelectionController::formulaForCommand() {
    if (!storeEdits()) {
        return std::nullopt;
    }
    if (tree_.selectedNode() != listedNode_) {
        tree_.select(listedNode_);
    }
    return formula();
}

void SelectionController::makeNodeCurrent() {
    const NodeId selected = tree_.selectedNode();
    if (selected.isValid()) {
        current_ = selected;
        setState(selected.isFolder() ? SelectionState::Folder : SelectionState::Library);
    }
}

void SelectionController::makeFormulaCurrent() {
    if (const auto selected = formula()) {
        current_ = *selected;
        setState(SelectionState::Formula);
    } else {
        setState(SelectionState::NoFormula);
    }
}

void SelectionController::setState(SelectionState state) {
    state_ = state;
    emit stateChanged(state);
}

}  // namespace varo
