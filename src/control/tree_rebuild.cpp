#include "control/tree_rebuild.h"

#include "platform/ui/node_view.h"

namespace varo {

void TreeRebuild::clear() {
    selection_.storeEdits();
    locator_.forget();
    selection_.highlight().forget();
    tree_.clear();
    selection_.showNothing();
    library_.close();
    showNothing();
}

bool TreeRebuild::build(const colFormulaDB& libraries, OnUnreadable onUnreadable) {
    const bool allRead = tree_.BuildFormulaTree(libraries, onUnreadable);
    selection_.highlight().forget();
    if ((!allRead && onUnreadable == OnUnreadable::Stop) || !tree_.firstNode().isValid()) {
        showNothing();
    } else {
        selection_.showNode(tree_.firstNode());
    }
    return allRead;
}

void TreeRebuild::showNothing() {
    tree_.view().setEnabled(true);
    list_.view().setEnabled(false);
    selection_.SetSelectionState(SelectionState::Nothing);
}

}  // namespace varo
