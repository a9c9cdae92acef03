#include "control/tree_rebuild.h"

#include "platform/ui/node_view.h"

namespace varo {

void TreeRebuild::clear() {
    // What cannot be stored is told, meanwhile events are handled.
    tree_.stopReading();
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
    const NodeId first = tree_.firstReadNode();
    if ((!allRead && onUnreadable == OnUnreadable::Stop) || !first.isValid()) {
        showNothing();
    } else {
        selection_.showNode(first);
    }
    return allRead;
}

void TreeRebuild::showNothing() {
    tree_.view().setEnabled(true);
    list_.view().setEnabled(false);
    selection_.SetSelectionState(SelectionState::Nothing);
}

}  // namespace varo
