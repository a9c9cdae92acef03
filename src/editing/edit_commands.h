#pragma once

#include "editing/edit_actions.h"
#include "editing/folder_commands.h"
#include "editing/formula_commands.h"

namespace varo {

/// Dispatches the edit commands: delete, move, copy and rename act on the current
/// item, a folder or a formula; paste puts in what the clipboard holds.
class EditCommands {
  public:
    /// Connects the commands to their actions. Everything handed in must outlive this.
    EditCommands(const SelectionController& selection, const Clipboard& clipboard,
                 EditActions& actions, FolderCommands& folders, FormulaCommands& formulas);

    /// Each returns false when a step failed; an item that is neither folder nor formula is left as
    /// it is, which is a success.
    bool deleteItem();
    bool moveItem(MoveDirection direction);
    bool copyItem();
    bool pasteItem();

    /// Opens the label of the current item.
    void renameItem();

  private:
    bool isFolder() const;
    bool isFormula() const;

    const SelectionController& selection_;
    const Clipboard& clipboard_;
    EditActions& actions_;
    FolderCommands& folders_;
    FormulaCommands& formulas_;
};

}  // namespace varo
