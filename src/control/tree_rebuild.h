#pragma once

#include "browse/selection_controller.h"
#include "search/property_locator.h"

namespace varo {

/// Builds the tree anew from the configured libraries. The clipboard keeps what it holds.
class TreeRebuild {
  public:
    /// Everything handed in must outlive this.
    TreeRebuild(SelectionController& selection, LibraryTree& tree, FormulaList& list,
                CurrentLibrary& library, PropertyLocator& locator)
        : selection_(selection), tree_(tree), list_(list), library_(library), locator_(locator) {}

    /// Before the libraries change: stores what is being typed in the library that it belongs to,
    /// empties tree, list and panel, ends the locate highlight, forgets what has been located and
    /// closes the current library. Nothing refers to a library by its number any more.
    void clear();

    /// Fills the tree from `libraries` and selects the first library that could be read as a
    /// click does; where there is none nothing is selected. Returns whether all libraries could be
    /// read. To stop at one that cannot be leaves the tree unselected there.
    bool build(const colFormulaDB& libraries, OnUnreadable onUnreadable);

    /// Selects nothing: only the tree, empty or not, can be used.
    void showNothing();

  private:
    SelectionController& selection_;
    LibraryTree& tree_;
    FormulaList& list_;
    CurrentLibrary& library_;
    PropertyLocator& locator_;
};

}  // namespace varo
