#pragma once

#include "control/configuration.h"
#include "store/collections.h"

#include <QString>

#include <functional>

namespace varo {

/// What became of a new list of libraries.
enum class LibraryChange {
    NoFolder,    ///< the configuration folder is not there any more: nothing is configured now
    NotWritten,  ///< the configuration file cannot be rewritten: the old list stands
    NotBuilt,    ///< the tree cannot be built: the old list stands
    Done,
};

/// Replaces the configured libraries by a new list, in the collection, in the configuration file of
/// `folder` and in the tree, or in none of them: `replace` puts the new list into the collection
/// `libraries`, which `configuration` writes; `build` builds the tree from the collection. The tree
/// of the old list is built again where that one stands. Killed at any point, it leaves a folder
/// from which Configuration::recover() brings the old or the new list back.
LibraryChange changeLibraries(Configuration& configuration, colFormulaDB& libraries,
                              const QString& folder, const std::function<void()>& replace,
                              const std::function<bool()>& build);

}  // namespace varo
