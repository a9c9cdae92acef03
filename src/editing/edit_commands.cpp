#include "editing/edit_commands.h"

#include "store/keys.h"

namespace varo {

EditCommands::EditCommands(ControlState& state, EditActions& actions, FolderCommands& folders,
                           FormulaCommands& formulas)
    : state_(state), folders_(folders), formulas_(formulas) {
    actions.connectCommand(EditCommand::NewFolder, [this] { folders_.newFolder(); });
    actions.connectCommand(EditCommand::NewFormula, [this] { formulas_.newFormula(); });
    actions.connectCommand(EditCommand::Delete, [this] { deleteItem(); });
    actions.connectCommand(EditCommand::MoveUp, [this] { moveItem(MoveDirection::Up); });
    actions.connectCommand(EditCommand::MoveDown, [this] { moveItem(MoveDirection::Down); });
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

void EditCommands::renameItem() {
    if (isFolderKey(state_.currentItemKey)) {
        folders_.renameFolder();
    } else if (isFormulaKey(state_.currentItemKey)) {
        formulas_.renameFormula();
    }
}

}  // namespace varo
