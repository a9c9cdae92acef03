#pragma once

#include "browse/selection_controller.h"
#include "search/find_results.h"

namespace varo {

/// Selects what has been found, in tree and list, as if the user had clicked it. What is not there
/// any more is told. The folders of a library that the tree has not read, or that was replaced
/// since, are read first.
class FindLocator {
  public:
    /// Everything handed in must outlive this.
    FindLocator(SelectionController& selection, LibraryTree& tree, FormulaList& list,
                Questions& questions)
        : selection_(selection), tree_(tree), list_(list), questions_(questions) {}

    /// The hit at a position of `results`, which counts as located from then on. Does nothing when
    /// what is being typed has to be corrected first.
    void locate(FindResults& results, int position);
    /// A formula and the node that it is in.
    void locateFormula(const NodeId& folder, qint32 formulaID);

  private:
    QString listedName(const FindHit& hit) const;
    bool showNode(const NodeId& node, const QString& gone);
    void showFormula(const NodeId& folder, qint32 formulaID);

    SelectionController& selection_;
    LibraryTree& tree_;
    FormulaList& list_;
    Questions& questions_;
};

}  // namespace varo
