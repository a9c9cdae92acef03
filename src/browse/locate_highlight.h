#pragma once

#include "browse/formula_list.h"
#include "browse/library_tree.h"

#include <variant>

namespace varo {

/// The one node or formula that is drawn as located, if any.
class LocateHighlight {
  public:
    /// Everything handed in must outlive this.
    LocateHighlight(LibraryTree& tree, FormulaList& list) : tree_(tree), list_(list) {}

    /// Draws a node, or a listed formula, as located until remove().
    void setNode(const NodeId& node);
    void setFormula(qint32 id);

    /// Draws what is located as a node or formula that carries a property.
    void remove();

    /// The same, if it is this node, or this listed formula, that is located.
    void removeFrom(const NodeId& node);
    void removeFrom(qint32 formula);

    /// Forgets what is located, because tree and list have been filled anew.
    void forget() { located_ = std::monostate(); }

  private:
    LibraryTree& tree_;
    FormulaList& list_;
    std::variant<std::monostate, NodeId, qint32> located_;
};

}  // namespace varo
