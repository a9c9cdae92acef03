#pragma once

#include "browse/selection_controller.h"
#include "editing/move_direction.h"
#include "library/clipboard.h"

#include <QObject>

namespace varo {

/// The edit commands on the formula list. Each changes the list only after the library, and tells
/// the user what fails.
class FormulaCommands : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this. Stores the labels that are typed in the list.
    FormulaCommands(SelectionController& selection, FormulaList& list, CurrentLibrary& library,
                    Clipboard& clipboard, Questions& questions);

    /// Makes a formula behind the others of the tree's selected node, shows it and opens its label.
    void newFormula();

    /// Deletes the selected formula, when the user confirms it, and shows the first of those that
    /// are left. Returns false when a step failed.
    bool deleteFormula();

    /// Exchanges the selected formula and its neighbour; nothing at the end of the list, which is a
    /// success.
    bool moveFormula(MoveDirection direction);

    /// Puts the selected formula, as it is shown, into the clipboard with a copy of its picture. A
    /// success also without one.
    bool copyFormula();

    /// Puts a copy of the clipboard's formula behind the others of the tree's selected node and
    /// shows it. Returns false when a step failed; a formula can be there without its picture then.
    bool pasteFormula();

    /// Opens the label of the selected formula.
    void renameFormula();

  private:
    bool storeName(qint32 id, const QString& name);
    void append(const clsFormulaInfo& formula);

    SelectionController& selection_;
    FormulaList& list_;
    CurrentLibrary& library_;
    Clipboard& clipboard_;
    Questions& questions_;
};

}  // namespace varo
