#include "editing/edit_commands.h"

#include "store/keys.h"

namespace varo {

EditCommands::EditCommands(ControlState& state, EditActions& actions, FolderCommands& folders,
                           FormulaCommands& formulas)
    : state_(state), actions_(actions), folders_(folders), formulas_(formulas) {
    actions.connectCommand(EditCommand::NewFolder, [this] { folders_.newFolder(); });
    actions.connectCommand(EditCommand::NewFormula, [this] { formulas_.newFormula(); });
    actions.connectCommand(EditCommand::Delete, [this] { deleteItem(); });
    actions.connectCommand(EditCommand::MoveUp, [this] { moveItem(MoveDirection::Up); });
    actions.connectCommand(EditCommand::MoveDown, [this] { moveItem(MoveDirection::Down); });
    actions.connectCommand(EditCommand::Copy, [this] { copyItem(); });
    actions.connectCommand(EditCommand::Paste, [this] { pasteItem(); });
    actions.connectCommand(EditCommand::Rename, [this] { renameItem(); });
}

bool EditCommands::deleteItem() {
    if (isFolderKey(state_.currentItemKey)) {
        return folders_.deleteFolder();
    }
    return !isFormulaKey(state_.currentItemKey) || formulas_.deleteFormula();
}

bool EditCommands::moveItem(MoveDirection direction) {
    if (isFolderKey(state_.currentItemKey)) {
        return folders_.moveFolder(direction);
    }
    return !isFormulaKey(state_.currentItemKey) || formulas_.moveFormula(direction);
}

bool EditCommands::copyItem() {
    bool copied = true;
    if (isFolderKey(state_.currentItemKey)) {
        copied = folders_.copyFolder();
    } else if (isFormulaKey(state_.currentItemKey)) {
        copied = formulas_.copyFormula();
    }
    actions_.clipboardChanged();
    return copied;
}

bool EditCommands::pasteItem() {
    if (state_.clipboard.holdsFolders()) {
        return folders_.pasteFolders();
    }
    return !state_.clipboard.holdsFormula() || formulas_.pasteFormula();
}

void EditCommands::renameItem() {
    if (isFolderKey(state_.currentItemKey)) {
        folders_.renameFolder();
    } else if (isFormulaKey(state_.currentItemKey)) {
        formulas_.renameFormula();
    }
}

}  // namespace varo
