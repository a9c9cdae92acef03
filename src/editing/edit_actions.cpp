#include "editing/edit_actions.h"

#include "platform/ui/icons.h"

#include <QAction>
#include <QToolBar>

#include <algorithm>
#include <array>
#include <optional>

namespace varo {

namespace {

/// The selection states as bits.
constexpr unsigned in(SelectionState state) {
    return 1U << static_cast<unsigned>(state);
}
constexpr unsigned kOnTree = in(SelectionState::Library) | in(SelectionState::Folder);
constexpr unsigned kInList = in(SelectionState::Formula) | in(SelectionState::NoFormula);
constexpr unsigned kAlways = kOnTree | kInList;
constexpr unsigned kOnItem = in(SelectionState::Folder) | in(SelectionState::Formula);
constexpr unsigned kOnFormula = in(SelectionState::Formula);

/// Where a shortcut gives its command.
enum class Scope {
    Item,     ///< in tree and list, on what is selected there
    Control,  ///< everywhere in the control
};

struct Description {
    EditCommand command;
    const char* entry;  ///< name in the popup menu; null for the tool bar's own
    QString caption;
    const char* icon;
    unsigned states;  ///< in which it is offered
    QKeySequence shortcut = {};
    Scope scope = Scope::Item;
};

const std::array kCommands{
    Description{EditCommand::LibraryManager, "mnuPopFormulaDB", QStringLiteral("公式库管理"),
                "configure", kAlways},
    Description{EditCommand::NewFolder, "mnuPopNewFolder", QStringLiteral("新建公式夹"),
                "folder-new", kAlways},
    Description{EditCommand::NewFormula, "mnuPopNewFormula", QStringLiteral("新建公式"),
                "document-new", kAlways},
    Description{EditCommand::Delete, "mnuPopDel", QStringLiteral("删除"), "edit-delete", kOnItem,
                Qt::Key_Delete},
    Description{EditCommand::LocateNode, "mnuPopLocateNode", QStringLiteral("节点定位条件"),
                "view-filter", kOnTree},
    Description{EditCommand::LocateFormula, "mnuPopLocateFormula", QStringLiteral("公式定位条件"),
                "view-filter", kOnFormula},
    Description{EditCommand::VariableSource, "mnuPopVarSource", QStringLiteral("变量值来源"),
                "code-variable", kOnFormula},
    Description{EditCommand::MoveUp, "mnuPopMoveUp", QStringLiteral("上移"), "go-up", kOnItem},
    Description{EditCommand::MoveDown, "mnuPopMoveDown", QStringLiteral("下移"), "go-down",
                kOnItem},
    Description{EditCommand::Copy, "mnuPopCopy", QStringLiteral("复制"), "edit-copy", kOnItem,
                Qt::CTRL | Qt::Key_C},
    Description{EditCommand::Paste, "mnuPopPaste", QStringLiteral("粘贴"), "edit-paste", kAlways,
                Qt::CTRL | Qt::Key_V},
    Description{EditCommand::Rename, "mnuPopRename", QStringLiteral("重命名"), "edit-rename",
                kOnItem, Qt::Key_F2},
    Description{EditCommand::Find, nullptr, QStringLiteral("查找"), "edit-find", kAlways,
                Qt::CTRL | Qt::Key_F, Scope::Control},
    Description{EditCommand::FindNext, nullptr, QStringLiteral("查找下一个"), "go-next", 0,
                Qt::Key_F3, Scope::Control},
    Description{EditCommand::FindPrevious, nullptr, QStringLiteral("查找上一个"), "go-previous", 0,
                Qt::SHIFT | Qt::Key_F3, Scope::Control},
    Description{EditCommand::Help, nullptr, QStringLiteral("帮助"), "help-contents", kAlways,
                Qt::Key_F1, Scope::Control},
};

/// The buttons of the tool bar, in order; nothing stands for a separator.
const std::optional<EditCommand> kButtons[] = {EditCommand::NewFolder,
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
                                               EditCommand::LibraryManager,
                                               EditCommand::Help};

}  // namespace

EditActions::EditActions(QToolBar& toolBar, SelectionController& selection, const LibraryTree& tree,
                         const FormulaList& list, const Clipboard& clipboard)
    : controlKeys_(*toolBar.parentWidget()),
      selection_(selection),
      tree_(tree),
      list_(list),
      clipboard_(clipboard) {
    for (const Description& description : kCommands) {
        auto* action = new QAction(ui::themeIcon(QString::fromLatin1(description.icon)),
                                   description.caption, this);
        action->setObjectName(description.entry != nullptr ? QString::fromLatin1(description.entry)
                                                           : description.caption);
        action->setToolTip(description.caption);
        action->setShortcut(description.shortcut);
        action->setShortcutVisibleInContextMenu(true);
        action->setEnabled(false);
        // Tree and list take the keys of their items themselves.
        action->setShortcutContext(Qt::WidgetShortcut);
        if (description.scope == Scope::Control) {
            controlKeys_.add(*action);
        }
        actions_[description.command] = action;
    }
    fillToolBar(toolBar);
    connect(&selection, &SelectionController::stateChanged, this, &EditActions::offer);
}

void EditActions::fillToolBar(QToolBar& toolBar) {
    for (const std::optional<EditCommand>& button : kButtons) {
        if (!button) {
            toolBar.addSeparator();
            continue;
        }
        QAction& shown = action(*button);
        toolBar.addAction(&shown);
        toolBar.widgetForAction(&shown)->setObjectName(shown.text());
    }
}

QList<QKeySequence> EditActions::itemKeys() const {
    QList<QKeySequence> keys;
    for (const Description& description : kCommands) {
        if (description.scope == Scope::Item && !description.shortcut.isEmpty()) {
            keys.append(description.shortcut);
        }
    }
    return keys;
}

void EditActions::trigger(const QKeySequence& key) {
    const auto found = std::ranges::find(kCommands, key, &Description::shortcut);
    if (found != kCommands.end()) {
        action(found->command).trigger();
    }
}

void EditActions::connectCommand(EditCommand command, std::function<void()> run) {
    action(command).setProperty("runs", true);
    connect(&action(command), &QAction::triggered, this, std::move(run));
}

bool EditActions::hasNeighbour(int step) const {
    const SelectionController::Item& item = selection_.currentItem();
    if (const auto* node = std::get_if<NodeId>(&item)) {
        return tree_.neighbour(*node, step).isValid();
    }
    const auto* formula = std::get_if<qint32>(&item);
    return formula != nullptr && list_.neighbour(*formula, step).has_value();
}

bool EditActions::canPaste() const {
    return (kOnTree & in(selection_.state())) != 0 ? clipboard_.holdsFolders()
                                                   : clipboard_.holdsFormula();
}

void EditActions::offer(SelectionState state) {
    for (const Description& description : kCommands) {
        setEnabled(description.command, (description.states & in(state)) != 0);
    }
    const bool movesUp = action(EditCommand::MoveUp).isEnabled() && hasNeighbour(-1);
    // A single node or item is offered the way down, where it then stays.
    const bool movesDown =
        action(EditCommand::MoveDown).isEnabled() && (!movesUp || hasNeighbour(1));
    setEnabled(EditCommand::MoveUp, movesUp);
    setEnabled(EditCommand::MoveDown, movesDown);
    clipboardChanged();
}

void EditActions::clipboardChanged() {
    setEnabled(EditCommand::Paste, (kAlways & in(selection_.state())) != 0 && canPaste());
}

void EditActions::setEnabled(EditCommand command, bool enabled) {
    action(command).setEnabled(enabled && action(command).property("runs").toBool());
}

}  // namespace varo
