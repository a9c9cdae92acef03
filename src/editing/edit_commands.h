#pragma once

#include "editing/edit_actions.h"
#include "editing/folder_commands.h"
#include "editing/formula_commands.h"

namespace varo {

/// Gives the edit commands to those who run them: delete, move, copy and rename act on the current
/// item, a folder or a formula; paste puts in what the clipboard holds.
class EditCommands {
  public:
    /// Connects the commands to their actions. Everything handed in must outlive this.
    EditCommands(ControlState& state, EditActions& actions, FolderCommands& folders,
                 FormulaCommands& formulas);

    /// Each returns false when a step failed; an item that is neither folder nor formula is left as
    /// it is, which is a success.
    bool deleteItem();
    bool moveItem(MoveDirection direction);
    bool copyItem();
    bool pasteItem();

    /// Opens the label of the current item.
    void renameItem();

  private:
    ControlState& state_;
    EditActions& actions_;
    FolderCommands& folders_;
    FormulaCommands& formulas_;
};

}  // namespace varo
