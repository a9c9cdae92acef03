#include "editing/edit_commands.h"

namespace varo {

EditCommands::EditCommands(const SelectionController& selection, const Clipboard& clipboard,
                           EditActions& actions, FolderCommands& folders, FormulaCommands& formulas)
    : selection_(selection),
      clipboard_(clipboard),
      actions_(actions),
      folders_(folders),
      formulas_(formulas) {
    actions.connectCommand(EditCommand::NewFolder, [this] { folders_.newFolder(); });
    actions.connectCommand(EditCommand::NewFormula, [this] { formulas_.newFormula(); });
    actions.connectCommand(EditCommand::Delete, [this] { deleteItem(); });
    actions.connectCommand(EditCommand::MoveUp, [this] { moveItem(MoveDirection::Up); });
    actions.connectCommand(EditCommand::MoveDown, [this] { moveItem(MoveDirection::Down); });
    actions.connectCommand(EditCommand::Copy, [this] { copyItem(); });
    actions.connectCommand(EditCommand::Paste, [this] { pasteItem(); });
    actions.connectCommand(EditCommand::Rename, [this] { renameItem(); });
}

/// What the current item is; a library is neither.
bool EditCommands::isFolder() const {
    const auto* node = std::get_if<NodeId>(&selection_.currentItem());
    return node != nullptr && node->isFolder();
}

bool EditCommands::isFormula() const {
    return std::holds_alternative<qint32>(selection_.currentItem());
}

bool EditCommands::deleteItem() {
    return isFolder() ? folders_.deleteFolder() : !isFormula() || formulas_.deleteFormula();
}

bool EditCommands::moveItem(MoveDirection direction) {
    return isFolder() ? folders_.moveFolder(direction)
                      : !isFormula() || formulas_.moveFormula(direction);
}

bool EditCommands::copyItem() {
    const bool copied =
        isFolder() ? folders_.copyFolder() : !isFormula() || formulas_.copyFormula();
    actions_.clipboardChanged();
    return copied;
}

bool EditCommands::pasteItem() {
    return clipboard_.holdsFolders() ? folders_.pasteFolders()
                                     : !clipboard_.holdsFormula() || formulas_.pasteFormula();
}

void EditCommands::renameItem() {
    if (isFolder()) {
        folders_.renameFolder();
    } else if (isFormula()) {
        formulas_.renameFormula();
    }
}

}  // namespace varo
