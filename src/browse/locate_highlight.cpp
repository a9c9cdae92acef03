#include "browse/locate_highlight.h"

namespace varo {

void LocateHighlight::setNode(const NodeId& node) {
    remove();
    tree_.setLocated(node, true);
    located_ = node;
}

void LocateHighlight::setFormula(qint32 id) {
    remove();
    list_.model().setImage(id, FormulaImage::FormulaLocated);
    located_ = id;
}

void LocateHighlight::remove() {
    if (const auto* node = std::get_if<NodeId>(&located_)) {
        tree_.setLocated(*node, false);
    } else if (const auto* formula = std::get_if<qint32>(&located_)) {
        list_.model().setImage(*formula, FormulaImage::FormulaWithProperty);
    }
    forget();
}

void LocateHighlight::removeFrom(const NodeId& node) {
    const auto* located = std::get_if<NodeId>(&located_);
    if (located != nullptr && *located == node) {
        remove();
    }
}

void LocateHighlight::removeFrom(qint32 formula) {
    const auto* located = std::get_if<qint32>(&located_);
    if (located != nullptr && *located == formula) {
        remove();
    }
}

}  // namespace varo
