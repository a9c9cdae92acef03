#include "search/locate_conditions.h"

namespace varo {

void LocateConditions::editNode() {
    const NodeId node = selection_.nodeForCommand();
    if (!node.isValid()) {
        return;
    }
    const auto count = editor_.edit({node.library, node.parentId(), NodeTypeFolder,
                                     QStringLiteral("节点定位条件"), tree_.text(node)});
    if (count) {
        selection_.highlight().removeFrom(node);
        tree_.showProperties(node, *count > 0);
    }
}

void LocateConditions::editFormula() {
    const auto id = selection_.formulaForCommand();
    if (!id) {
        return;
    }
    const NodeId folder = selection_.listedNode();
    const auto count =
        editor_.edit({folder.library, *id, NodeTypeFormula, QStringLiteral("公式定位条件"),
                      list_.model().find(*id)->FormulaName});
    // The host may have listed another library, with another formula of this number, meanwhile.
    if (count && selection_.listedNode().library == folder.library) {
        selection_.highlight().removeFrom(*id);
        list_.model().setImage(
            *id, *count > 0 ? FormulaImage::FormulaWithProperty : FormulaImage::Formula);
    }
}

}  // namespace varo
