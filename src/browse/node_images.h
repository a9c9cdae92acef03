#pragma once

#include <QIcon>

namespace varo {

/// The pictures of tree nodes and list items, by the index under which the component knows them.
enum class NodeImage {
    Library = 1,
    Folder = 2,
    FolderOpen = 3,
    LibraryWithProperty = 4,
    FolderWithProperty = 5,
    FolderWithPropertyOpen = 6,
    FolderLocated = 7,
    LibraryUnreadable = 8,
};
enum class FormulaImage { Formula = 2, FormulaWithProperty = 12, FormulaLocated = 13 };

/// Icons sharp at every scale; an index that has none gives an empty icon.
QIcon nodeIcon(NodeImage image);
QIcon formulaIcon(FormulaImage image);

/// What those who do not see the picture are told of an item that is drawn as located; nothing of
/// any other.
QString locatedDescription(bool isLocated);

}  // namespace varo
