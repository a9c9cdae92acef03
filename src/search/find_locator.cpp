#include "search/find_locator.h"

#include "search/locate_messages.h"

namespace varo {

void FindLocator::locate(FindResults& results, int position) {
    if (!selection_.storeEdits()) {
        return;
    }
    results.setLocated(position);
    const FindHit hit = results.hit(position);
    if (hit.kind == NodeTypeFormula) {
        if (isStillThere(hit, listedName(hit))) {
            showFormula(hit.node(), hit.id);
        } else {
            questions_.inform(kFormulaGone);
        }
    } else if (isStillThere(hit, tree_.text(hit.node()))) {
        showNode(hit.node(), kNodeGone);
    } else {
        questions_.inform(kNodeGone);
    }
}

void FindLocator::locateFormula(const NodeId& folder, qint32 formulaID) {
    if (selection_.storeEdits()) {
        showFormula(folder, formulaID);
    }
}

/// The name under which a formula is listed; "" when it is not.
QString FindLocator::listedName(const FindHit& hit) const {
    const clsFormulaInfo* listed =
        selection_.listedNode() == hit.node() ? list_.model().find(hit.id) : nullptr;
    return listed == nullptr ? QString() : listed->FormulaName;
}

/// Returns whether the node's formulas are listed; the user has been told when they are not.
bool FindLocator::showNode(const NodeId& node, const QString& gone) {
    switch (selection_.findNode(node)) {
        case SelectionController::NodePlace::Tree:
            return selection_.showNode(node);
        case SelectionController::NodePlace::Gone:
            questions_.inform(gone);
            break;
        case SelectionController::NodePlace::Unknown:
            questions_.inform(SelectionController::kNotOpened);
            break;
    }
    return false;
}

void FindLocator::showFormula(const NodeId& folder, qint32 formulaID) {
    if (!showNode(folder, kFolderGone)) {
        return;
    }
    if (list_.model().find(formulaID) == nullptr) {
        questions_.inform(kFormulaGone);
        return;
    }
    selection_.selectFormula(formulaID);
}

}  // namespace varo
