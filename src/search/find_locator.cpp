#include "search/find_locator.h"

namespace varo {

namespace {

const QString kNoFolder = QStringLiteral("用户需要定位的节点不存在！");
const QString kNoFormula = QStringLiteral("用户需要定位的公式不存在！");

}  // namespace

void FindLocator::locate(const FindHit& hit) {
    if (hit.kind == NodeTypeFolder) {
        if (isStillThere(hit, tree_.text(hit.node()))) {
            locateFolder(hit.node());
        } else {
            questions_.inform(kNoFolder);
        }
    } else if (!tree_.contains(hit.node()) || isStillThere(hit, QString())) {
        locateFormula(hit.node(), hit.id);
    } else {
        questions_.inform(kNoFormula);
    }
}

void FindLocator::locateFolder(const NodeId& folder) {
    if (tree_.contains(folder)) {
        selection_.selectNode(folder);
    } else {
        questions_.inform(kNoFolder);
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
        questions_.inform(kNoFormula);
        return;
    }
    selection_.selectFormula(formulaID);
}

}  // namespace varo
