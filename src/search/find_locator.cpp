#include "search/find_locator.h"

namespace varo {

void FindLocator::locate(const FindHit& hit) {
    if (hit.kind == NodeTypeFolder) {
        locateFolder(hit.node());
    } else {
        locateFormula(hit.node(), hit.id);
    }
}

void FindLocator::locateFolder(const NodeId& folder) {
    if (tree_.contains(folder)) {
        selection_.selectNode(folder);
    } else {
        questions_.inform(QStringLiteral("用户需要定位的节点不存在！"));
    }
}

void FindLocator::locateFormula(const NodeId& folder, qint32 formulaID) {
    if (!tree_.contains(folder)) {
        questions_.inform(QStringLiteral("用户需要定位的公式夹不存在！"));
        return;
    }
    if (!selection_.selectNode(folder)) {
        return;
    }
    if (list_.model().find(formulaID) == nullptr) {
        questions_.inform(QStringLiteral("用户需要定位的公式不存在！"));
        return;
    }
    selection_.selectFormula(formulaID);
}

}  // namespace varo
