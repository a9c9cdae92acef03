#pragma once

#include "browse/selection_controller.h"
#include "search/property_editor.h"

namespace varo {

/// The commands 节点定位条件 and 公式定位条件: they open the property-conditions dialog on the
/// selected node or formula, which then shows whether it carries properties.
class LocateConditions {
  public:
    /// Everything handed in must outlive this.
    LocateConditions(SelectionController& selection, LibraryTree& tree, FormulaList& list,
                     PropertyEditor& editor)
        : selection_(selection), tree_(tree), list_(list), editor_(editor) {}

    /// Each stores what is being typed first, and does nothing when that has to be corrected, when
    /// nothing is selected or the dialog is open already. This may be destroyed meanwhile.
    void editNode();
    void editFormula();

  private:
    SelectionController& selection_;
    LibraryTree& tree_;
    FormulaList& list_;
    PropertyEditor& editor_;
};

}  // namespace varo
