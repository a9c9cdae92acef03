#pragma once

#include "library/current_library.h"

#include <vector>

namespace varo {

/// Reads which folders or formulas of the library carry properties, one identifier for each
/// property; 0 stands for the library itself. Returns false when reading fails, with those read
/// before in `ids`; shows nothing.
bool readNodesWithProperty(CurrentLibrary& library, NodeType kind, std::vector<qint32>& ids);

/// What the user is told when readNodesWithProperty() fails.
QString propertiesNotReadMessage();

}  // namespace varo
