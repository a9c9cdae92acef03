#pragma once

namespace varo {

/// What is selected in tree and list. It decides which widgets of the panel accept input and which
/// edit commands are offered; any other number offers nothing.
enum class SelectionState : int {
    Nothing = 1,
    Library = 2,
    Folder = 3,
    Formula = 4,
    NoFormula = 5,  ///< the list has no selected formula
};

}  // namespace varo
