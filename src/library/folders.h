#pragma once

#include "library/current_library.h"
#include "library/folder_rows.h"

#include <vector>

namespace varo {

/// Reads all folders of the library. Returns false when reading fails; shows nothing.
bool readFolders(CurrentLibrary& library, FolderRows& rows);

/// Appends a folder with this name to those below `parent` (0: the library's top level); `id`
/// receives its identifier. Returns false when that fails.
bool addFolder(CurrentLibrary& library, qint32 parent, const QString& name, qint32& id);

/// Renames a folder. Returns false, with the folder as it was, when that fails. A folder that has
/// gone is no failure.
bool renameFolder(CurrentLibrary& library, qint32 folder, const QString& name);

/// What deleteSubtree() has done.
struct SubtreeDeletion {
    std::vector<qint32> gone;  ///< the deleted folders, each behind those below it
    bool complete = false;     ///< no step failed
    bool committed = false;    ///< what was done has reached the file
};

/// Deletes a folder with all folders below it, their formulas, and the properties of all of these,
/// the deepest first. What was done before a step that fails stays done, unless the library takes
/// nothing at all.
SubtreeDeletion deleteSubtree(CurrentLibrary& library, qint32 folder);

/// The folders of a library after two of them have been exchanged.
struct FolderOrder {
    FolderRows rows;
    std::vector<qint32> withProperty;  ///< see readNodesWithProperty()
    bool propertiesRead = false;
};

/// Exchanges the places of two neighbours and reads the library's folders as they are then. Returns
/// what the user is to be told when that fails, with the library as it was; "" otherwise.
/// Properties that cannot be read are no failure.
QString exchangeFolders(CurrentLibrary& library, qint32 folder, qint32 neighbour,
                        FolderOrder& order);

}  // namespace varo
