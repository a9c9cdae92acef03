#pragma once

#include "control/form.h"
#include "control/state.h"

#include <QObject>

#include <functional>
#include <map>

class QAction;

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
/// the rule that says when a command is offered. A command that nobody runs stays disabled.
class EditActions : public QObject {
    Q_OBJECT

  public:
    /// Fills `form.tbEdit`; form and state must outlive this.
    EditActions(Form& form, const ControlState& state);

    /// Owned by this. An action that the menu has is named as its entry, another one as its
    /// button; the buttons are named by their captions.
    QAction& action(EditCommand command) const { return *actions_.at(command); }

    /// The keys that give commands in tree and list.
    QList<QKeySequence> shortcuts() const;

    /// Gives the command of a key, if it is offered.
    void trigger(const QKeySequence& key);

    /// `run` is called when the user gives the command; the menu is closed by then.
    void connectCommand(EditCommand command, std::function<void()> run);

    /// Offers what the state of the control allows, for the selection as it is now.
    void setCommandState(CommandState state);

    /// Offers paste as the clipboard, which has changed, allows.
    void clipboardChanged();

    /// Enables or disables one command whatever the state, until that changes.
    void setEnabled(EditCommand command, bool enabled);

  private:
    void fillToolBar();

    Form& form_;
    const ControlState& state_;
    std::map<EditCommand, QAction*> actions_;
};

}  // namespace varo
