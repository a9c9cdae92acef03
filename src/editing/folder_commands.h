#pragma once

#include "browse/selection_controller.h"
#include "editing/move_direction.h"
#include "library/clipboard.h"

#include <QObject>

namespace varo {

/// The edit commands on the selected node of the tree. Each changes the tree only after the
/// library, and tells the user what fails.
class FolderCommands : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this. Stores the labels that are typed in the tree.
    FolderCommands(SelectionController& selection, LibraryTree& tree, CurrentLibrary& library,
                   Clipboard& clipboard, Questions& questions);

    /// Makes a folder behind the others of the selected node, selects it and opens its label.
    void newFolder();

    /// Deletes the selected folder with all below it, when the user confirms it, and selects its
    /// parent. What was deleted before a step that fails stays deleted. Returns false when a step
    /// failed.
    bool deleteFolder();

    /// Exchanges the selected folder and its neighbour; nothing at the end of the row, which is a
    /// success.
    bool moveFolder(MoveDirection direction);

    /// Puts the selected folder with all below it into the clipboard. Returns false when it cannot
    /// be read.
    bool copyFolder();

    /// Puts a copy of the clipboard's folder behind the others of the selected node, with the
    /// folders in it when the user wants them. Returns false when a step failed; what was pasted
    /// before stays.
    bool pasteFolders();

    /// Opens the label of the selected folder.
    void renameFolder();

  private:
    bool storeName(const NodeId& folder, const QString& name);
    bool pasteBelow(const NodeId& target, bool withSubfolders, HeldMessages& messages);

    SelectionController& selection_;
    LibraryTree& tree_;
    CurrentLibrary& library_;
    Clipboard& clipboard_;
    Questions& questions_;
};

}  // namespace varo
