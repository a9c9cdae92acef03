#pragma once

#include "control/folder_tree.h"
#include "control/state.h"
#include "platform/held_messages.h"

#include <QModelIndex>

namespace varo {

/// Puts a folder node, all nodes below it and their formulas with pictures into the clipboard, as
/// they are now. Returns false when the library cannot be read; the clipboard is then empty. What
/// there is to tell of pictures waits in `messages`.
bool captureFolders(const QModelIndex& folder, ControlState& state, HeldMessages& messages);

/// What became of a formula for a library.
enum class InsertedFormula { Nothing, WithoutPicture, Whole };

/// Appends a formula, with the picture that its file holds, to the folder that it names in the
/// current library; `formula` then has the identifier that it got.
InsertedFormula insertFormula(clsFormulaInfo& formula, clsDBFuncs& dbFuncs, ControlState& state);

/// What insertClipboardFolders() has put into a library.
struct PastedFolders {
    FolderRows rows;        ///< the new folders, each behind the one that it is in
    bool complete = false;  ///< nothing is missing
};

/// Puts a copy of the clipboard's folders, with or without those in the first one, and of their
/// formulas behind the folders in `target` (0: the top level) of the current library. New folders
/// may stand `levels` deep at most. What was done before a step that fails stays done, unless the
/// library takes nothing at all. What there is to tell of pictures waits in `messages`.
PastedFolders insertClipboardFolders(qint32 target, bool withSubfolders, int levels,
                                     ControlState& state, HeldMessages& messages);

}  // namespace varo
