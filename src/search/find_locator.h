#pragma once

#include "browse/selection_controller.h"
#include "library/node_search.h"

namespace varo {

/// Selects what has been found, in tree and list, as if the user had clicked it. What is not there
/// any more is told.
class FindLocator {
  public:
    /// Everything handed in must outlive this.
    FindLocator(SelectionController& selection, LibraryTree& tree, FormulaList& list,
                Questions& questions)
        : selection_(selection), tree_(tree), list_(list), questions_(questions) {}

    void locate(const FindHit& hit);
    void locateFolder(const NodeId& folder);
    /// A formula and the node that it is in.
    void locateFormula(const NodeId& folder, qint32 formulaID);

  private:
    SelectionController& selection_;
    LibraryTree& tree_;
    FormulaList& list_;
    Questions& questions_;
};

}  // namespace varo
