#include "editing/edit_actions.h"

#include "platform/ui/icons.h"
#include "platform/ui/node_view.h"

#include <QAction>
#include <QToolBar>

#include <algorithm>
#include <array>
#include <optional>

namespace varo {

namespace {

/// The command states as bits.
constexpr unsigned in(CommandState state) {
    return 1U << static_cast<unsigned>(state);
}
constexpr unsigned OnTree = in(CommandState::LibrarySelected) | in(CommandState::FolderSelected);
constexpr unsigned InList = in(CommandState::FormulaSelected) | in(CommandState::NoFormula);
constexpr unsigned Always = OnTree | InList;
constexpr unsigned OnItem = in(CommandState::FolderSelected) | in(CommandState::FormulaSelected);
constexpr unsigned OnFormula = in(CommandState::FormulaSelected);

/// What decides, besides the command state, on the commands that are offered.
struct Situation {
    CommandState state;
    QModelIndex selected;  ///< node or item that the state speaks of
    const Clipboard& clipboard;
};

bool canMoveUp(const Situation& situation) {
    return situation.selected.row() > 0;
}

/// A single node or item is offered the way down, where it then stays.
bool canMoveDown(const Situation& situation) {
    const QModelIndex& selected = situation.selected;
    return !canMoveUp(situation) || selected.sibling(selected.row() + 1, 0).isValid();
}

bool canPaste(const Situation& situation) {
    return (OnTree & in(situation.state)) != 0 ? situation.clipboard.holdsFolders()
                                               : situation.clipboard.holdsFormula();
}

struct Description {
    EditCommand command;
    const char* entry;  ///< name in the popup menu; null for the tool bar's own
    QString caption;
    const char* icon;
    unsigned states;                                ///< in which it is offered ...
    bool (*condition)(const Situation&) = nullptr;  ///< ... if this holds too
    QKeySequence shortcut = {};
};

const std::array Commands{
    Description{EditCommand::LibraryManager, "mnuPopFormulaDB", QStringLiteral("公式库管理"),
                "configure", OnTree},
    Description{EditCommand::NewFolder, "mnuPopNewFolder", QStringLiteral("新建公式夹"),
                "folder-new", Always},
    Description{EditCommand::NewFormula, "mnuPopNewFormula", QStringLiteral("新建公式"),
                "document-new", Always},
    Description{EditCommand::Delete, "mnuPopDel", QStringLiteral("删除"), "edit-delete", OnItem,
                nullptr, Qt::Key_Delete},
    Description{EditCommand::LocateNode, "mnuPopLocateNode", QStringLiteral("节点定位条件"),
                "view-filter", OnTree},
    Description{EditCommand::LocateFormula, "mnuPopLocateFormula", QStringLiteral("公式定位条件"),
                "view-filter", OnFormula},
    Description{EditCommand::VariableSource, "mnuPopVarSource", QStringLiteral("变量值来源"),
                "code-variable", OnFormula},
    Description{EditCommand::MoveUp, "mnuPopMoveUp", QStringLiteral("上移"), "go-up", OnItem,
                canMoveUp},
    Description{EditCommand::MoveDown, "mnuPopMoveDown", QStringLiteral("下移"), "go-down", OnItem,
                canMoveDown},
    Description{EditCommand::Copy, "mnuPopCopy", QStringLiteral("复制"), "edit-copy", OnItem,
                nullptr, Qt::CTRL | Qt::Key_C},
    Description{EditCommand::Paste, "mnuPopPaste", QStringLiteral("粘贴"), "edit-paste", Always,
                canPaste, Qt::CTRL | Qt::Key_V},
    Description{EditCommand::Rename, "mnuPopRename", QStringLiteral("重命名"), "edit-rename",
                OnItem, nullptr, Qt::Key_F2},
    Description{EditCommand::Find, nullptr, QStringLiteral("查找"), "edit-find", Always},
    Description{EditCommand::FindNext, nullptr, QStringLiteral("查找下一个"), "go-next", 0},
    Description{EditCommand::FindPrevious, nullptr, QStringLiteral("查找上一个"), "go-previous", 0},
    Description{EditCommand::Help, nullptr, QStringLiteral("帮助"), "help-contents", Always},
};

/// The buttons of the tool bar, in order; nothing stands for a separator.
const std::optional<EditCommand> Buttons[] = {EditCommand::NewFolder,
                                              EditCommand::NewFormula,
                                              std::nullopt,
                                              EditCommand::Copy,
                                              EditCommand::Paste,
                                              EditCommand::Delete,
                                              std::nullopt,
                                              EditCommand::MoveUp,
                                              EditCommand::MoveDown,
                                              std::nullopt,
                                              EditCommand::Find,
                                              EditCommand::FindNext,
                                              EditCommand::FindPrevious,
                                              std::nullopt,
                                              EditCommand::Help};

bool isOffered(const Description& description, const Situation& situation) {
    const auto state = static_cast<unsigned>(situation.state);
    return state < 32 && (description.states & in(situation.state)) != 0 &&
           (description.condition == nullptr || description.condition(situation));
}

}  // namespace

EditActions::EditActions(Form& form, const ControlState& state) : form_(form), state_(state) {
    for (const Description& description : Commands) {
        auto* action = new QAction(ui::themeIcon(QString::fromLatin1(description.icon)),
                                   description.caption, this);
        action->setObjectName(description.entry != nullptr ? QString::fromLatin1(description.entry)
                                                           : description.caption);
        action->setToolTip(description.caption);
        action->setShortcut(description.shortcut);
        // Shown in the menu; tree and list take the keys themselves, for what is selected in them.
        action->setShortcutContext(Qt::WidgetShortcut);
        action->setShortcutVisibleInContextMenu(true);
        action->setEnabled(false);
        actions_[description.command] = action;
    }
    fillToolBar();
}

void EditActions::fillToolBar() {
    for (const std::optional<EditCommand>& button : Buttons) {
        if (!button) {
            form_.tbEdit->addSeparator();
            continue;
        }
        QAction& shown = action(*button);
        form_.tbEdit->addAction(&shown);
        form_.tbEdit->widgetForAction(&shown)->setObjectName(shown.text());
    }
}

QList<QKeySequence> EditActions::shortcuts() const {
    QList<QKeySequence> keys;
    for (const auto& [command, action] : actions_) {
        keys += action->shortcuts();
    }
    return keys;
}

void EditActions::trigger(const QKeySequence& key) {
    for (const auto& [command, action] : actions_) {
        if (action->shortcuts().contains(key)) {
            action->trigger();
            return;
        }
    }
}

void EditActions::connectCommand(EditCommand command, std::function<void()> run) {
    action(command).setProperty("runs", true);
    connect(&action(command), &QAction::triggered, this, std::move(run));
}

void EditActions::setCommandState(CommandState state) {
    const ui::NodeView* view =
        state == CommandState::FormulaSelected ? form_.lvFormula : form_.tvFolder;
    const Situation situation{state, view->selectedIndex(), state_.clipboard};
    for (const Description& description : Commands) {
        setEnabled(description.command, isOffered(description, situation));
    }
}

void EditActions::clipboardChanged() {
    const Situation situation{state_.commandState, {}, state_.clipboard};
    const auto paste = std::ranges::find(Commands, EditCommand::Paste, &Description::command);
    setEnabled(EditCommand::Paste, isOffered(*paste, situation));
}

void EditActions::setEnabled(EditCommand command, bool enabled) {
    action(command).setEnabled(enabled && action(command).property("runs").toBool());
}

}  // namespace varo
