#pragma once

#include "browse/selection_controller.h"
#include "library/clipboard.h"
#include "platform/ui/action_keys.h"

#include <QObject>

#include <functional>
#include <map>

class QAction;
class QToolBar;

namespace varo {

/// The commands that the popup menu and the edit tool bar give.
enum class EditCommand {
    LibraryManager,
    NewFolder,
    NewFormula,
    Delete,
    LocateNode,
    LocateFormula,
    VariableSource,
    MoveUp,
    MoveDown,
    Copy,
    Paste,
    Rename,
    Find,
    FindNext,
    FindPrevious,
    Help
};

/// The one set of actions behind the edit tool bar and the popup menu: caption, icon, shortcut and
/// the rule that says when a command is offered. A command that is not connected stays disabled.
class EditActions : public QObject {
    Q_OBJECT

  public:
    /// Fills `toolBar`, whose window part takes the shortcuts that work everywhere in it.
    /// Everything handed in must outlive this.
    EditActions(QToolBar& toolBar, SelectionController& selection, const LibraryTree& tree,
                const FormulaList& list, const Clipboard& clipboard);

    /// Owned by this. An action that the menu has is named as its entry, another one as its
    /// button; the buttons are named by their captions.
    QAction& action(EditCommand command) const { return *actions_.at(command); }

    /// The keys that give commands on what is selected in tree and list.
    QList<QKeySequence> itemKeys() const;

    /// Gives the command of such a key, if it is offered.
    void trigger(const QKeySequence& key);

    /// `run` is called when the user gives the command; the menu is closed by then.
    void connectCommand(EditCommand command, std::function<void()> run);

    /// Offers paste as the clipboard, which has changed, allows.
    void clipboardChanged();

    /// Enables or disables one command whatever the state, until that changes.
    void setEnabled(EditCommand command, bool enabled);

  private:
    void fillToolBar(QToolBar& toolBar);
    void offer(SelectionState state);
    bool canPaste() const;
    bool hasNeighbour(int step) const;

    ui::ActionKeys controlKeys_;
    const SelectionController& selection_;
    const LibraryTree& tree_;
    const FormulaList& list_;
    const Clipboard& clipboard_;
    std::map<EditCommand, QAction*> actions_;
};

}  // namespace varo
