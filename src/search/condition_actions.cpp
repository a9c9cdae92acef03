#include "search/condition_actions.h"

#include "platform/ui/icons.h"

#include <QAction>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

#include <optional>

namespace varo {

namespace {

using Command = ConditionCommand;

struct Description {
    Command command;
    const char* name;
    QString text;
    QString tip;  ///< "" where the text says enough
    const char* icon;
    QList<QKeySequence> keys = {};
    bool isWide = false;  ///< the keys work everywhere in the editor
};

const Description kCommands[] = {
    {Command::AddComparison,
     "cmdAddCompare",
     QStringLiteral("比较"),
     QStringLiteral("添加比较"),
     "list-add",
     {Qt::Key_Insert}},
    {Command::AddAnd, "cmdAddAnd", QStringLiteral("并且"),
     QStringLiteral("添加“并且”组：其中的条件全部成立时成立"), "list-add"},
    {Command::AddOr, "cmdAddOr", QStringLiteral("或者"),
     QStringLiteral("添加“或者”组：其中至少一个条件成立时成立"), "list-add"},
    {Command::AddNot, "cmdAddNot", QStringLiteral("并非"),
     QStringLiteral("添加“并非”组：其中的条件不成立时成立"), "list-add"},
    {Command::WrapAnd, "actWrapAnd", QStringLiteral("包入“并且”"), {}, "object-group"},
    {Command::WrapOr, "actWrapOr", QStringLiteral("包入“或者”"), {}, "object-group"},
    {Command::WrapNot, "actWrapNot", QStringLiteral("包入“并非”"), {}, "object-group"},
    {Command::Unwrap, "cmdUnwrap", QStringLiteral("拆散组"),
     QStringLiteral("拆散组，保留其中的条件"), "object-ungroup"},
    {Command::Remove, "cmdRemove", QStringLiteral("删除条件"), {}, "edit-delete", {Qt::Key_Delete}},
    {Command::MoveUp, "cmdMoveUp", QStringLiteral("上移"), {}, "go-up", {Qt::CTRL | Qt::Key_Up}},
    {Command::MoveDown,
     "cmdMoveDown",
     QStringLiteral("下移"),
     {},
     "go-down",
     {Qt::CTRL | Qt::Key_Down}},
    {Command::MoveOut,
     "cmdMoveOut",
     QStringLiteral("移出组"),
     {},
     "go-previous",
     {Qt::CTRL | Qt::Key_Left}},
    {Command::MoveIn,
     "cmdMoveIn",
     QStringLiteral("移入相邻的组"),
     {},
     "go-next",
     {Qt::CTRL | Qt::Key_Right}},
    {Command::Undo,
     "cmdUndo",
     QStringLiteral("撤消"),
     {},
     "edit-undo",
     {Qt::CTRL | Qt::Key_Z},
     true},
    {Command::Redo,
     "cmdRedo",
     QStringLiteral("重做"),
     {},
     "edit-redo",
     {Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Qt::CTRL | Qt::Key_Y},
     true},
    {Command::Clear, "cmdClear", QStringLiteral("清空"), QStringLiteral("删除全部条件"),
     "edit-clear-all"},
    {Command::Try,
     "cmdTry",
     QStringLiteral("试算"),
     QStringLiteral("用当前的属性值试算，标出哪些条件成立"),
     "media-playback-start",
     {Qt::Key_F9},
     true},
};

/// The buttons of the two bars; nothing stands for a separator.
const std::optional<Command> kAdding[] = {Command::AddComparison, Command::AddAnd, Command::AddOr,
                                          Command::AddNot,        std::nullopt,    Command::Try};
const std::optional<Command> kChanging[] = {Command::Unwrap, Command::Remove,   std::nullopt,
                                            Command::MoveUp, Command::MoveDown, Command::MoveOut,
                                            Command::MoveIn, std::nullopt,      Command::Undo,
                                            Command::Redo,   Command::Clear};

QString tipOf(const Description& description) {
    const QString tip = description.tip.isEmpty() ? description.text : description.tip;
    return description.keys.isEmpty()
               ? tip
               : QStringLiteral("%1（%2）").arg(tip, description.keys.first().toString());
}

}  // namespace

ConditionActions::ConditionActions(QWidget& editor, QWidget& view,
                                   std::function<void(ConditionCommand)> run)
    : QObject(&editor) {
    for (const Description& each : kCommands) {
        auto* action = new QAction(ui::themeIcon(QString::fromLatin1(each.icon)), each.text, this);
        action->setObjectName(QString::fromLatin1(each.name));
        action->setToolTip(tipOf(each));
        action->setShortcuts(each.keys);
        action->setShortcutVisibleInContextMenu(true);
        action->setShortcutContext(each.isWide ? Qt::WidgetWithChildrenShortcut
                                               : Qt::WidgetShortcut);
        view.addAction(action);
        if (each.isWide) {
            editor.addAction(action);
        }
        connect(action, &QAction::triggered, this, [run, command = each.command] { run(command); });
        actions_[each.command] = action;
    }
}

void ConditionActions::fillBars(QToolBar& adding, QToolBar& changing) {
    wrap_ = new QToolButton(&changing);
    wrap_->setObjectName(QStringLiteral("cmdWrap"));
    wrap_->setIcon(ui::themeIcon(QStringLiteral("object-group")));
    wrap_->setToolTip(QStringLiteral("把选中的条件包入新的组"));
    wrap_->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(wrap_);
    for (const Command command : {Command::WrapAnd, Command::WrapOr, Command::WrapNot}) {
        menu->addAction(actions_.at(command));
    }
    wrap_->setMenu(menu);
    changing.addWidget(wrap_);
    const auto fill = [&](QToolBar& bar, const auto& commands) {
        for (const std::optional<Command>& command : commands) {
            if (command) {
                QAction* action = actions_.at(*command);
                bar.addAction(action);
                bar.widgetForAction(action)->setObjectName(action->objectName());
            } else {
                bar.addSeparator();
            }
        }
    };
    fill(adding, kAdding);
    fill(changing, kChanging);
}

void ConditionActions::enable(const std::function<bool(ConditionCommand)>& canRun) {
    for (const auto& [command, action] : actions_) {
        action->setEnabled(canRun(command));
    }
    if (wrap_ != nullptr) {
        wrap_->setEnabled(actions_.at(Command::WrapAnd)->isEnabled());
    }
}

}  // namespace varo
