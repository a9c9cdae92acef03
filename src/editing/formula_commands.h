#pragma once

#include "control/library_tree.h"
#include "editing/folder_copies.h"
#include "editing/move_direction.h"
#include "platform/held_messages.h"

#include <QObject>

namespace varo {

/// The edit commands on the formula list. Each changes the list only after the library, and tells
/// the user what fails.
class FormulaCommands : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this. Stores the labels that are typed in the list.
    FormulaCommands(Form& form, ControlState& state, Questions& questions, LibraryTree& tree,
                    FormulaList& list);

    /// Makes a formula behind the others of the tree's selected node, shows it and opens its label.
    void newFormula();

    /// Deletes the selected formula, when the user confirms it, and shows the first of those that
    /// are left. Returns false when a step failed.
    bool deleteFormula();

    /// Exchanges the selected formula and its neighbour; nothing at the end of the list, which is a
    /// success.
    bool moveFormula(MoveDirection direction);

    /// Puts the selected formula, as it is shown, into the clipboard with a copy of its picture.
    /// A success also without one.
    bool copyFormula();

    /// Puts a copy of the clipboard's formula behind the others of the tree's selected node and
    /// shows it. Returns false when a step failed; a formula can be there without its picture then.
    bool pasteFormula();

    /// Opens the label of the selected formula.
    void renameFormula();

  private:
    QString selectedFormula();
    QString copyPicture(const clsFormulaInfo& formula, HeldMessages& messages);
    InsertedFormula storeCopy(clsFormulaInfo& formula, HeldMessages& messages);
    bool storeName(const QString& key, const QString& name);
    void showFirst();

    Form& form_;
    ControlState& state_;
    Questions& questions_;
    LibraryTree& tree_;
    FormulaList& list_;
};

}  // namespace varo
