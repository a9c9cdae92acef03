#include "editing/beam_desk.h"
#include "editing/edit_actions.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QStandardItemModel>
#include <QToolBar>

namespace varo::test {
namespace {

class Offering : public BeamDesk {
  protected:
    /// Captions of the enabled buttons.
    QString buttons() {
        QStringList enabled;
        for (const QAction* action : desk.child<QToolBar>("tbEdit").actions()) {
            if (action->isEnabled() && !action->isSeparator()) {
                enabled.append(action->text());
            }
        }
        return enabled.join(u' ');
    }

    /// The entries of the open menu without their prefix, the disabled ones in parentheses, and
    /// closes it.
    QString entries() {
        QStringList shown;
        EXPECT_TRUE(desk.menu().isVisible());
        for (const QAction* action : desk.menu().actions()) {
            const QString name = action->objectName().mid(6);
            const bool enabled = action->isEnabled() || action->isSeparator();
            shown.append(enabled ? name : u'(' + name + u')');
            EXPECT_TRUE(action->isSeparator() || !action->icon().isNull());
        }
        desk.menu().close();
        return shown.join(u' ');
    }
};

TEST_F(Offering, TheTreeOffersByKindAndPositionOfTheNode) {
    const auto tree = [](const char* newFolder, const char* del, const char* up, const char* down,
                         const char* copy, const char* rename) {
        return QStringLiteral(
                   "(FormulaDB) Line5 %1 %2 Line4 (LocateNode) Line1 %3 %4 Line2 %5 "
                   "(Paste) Line3 %6")
            .arg(QLatin1StringView(newFolder), QLatin1StringView(del), QLatin1StringView(up),
                 QLatin1StringView(down), QLatin1StringView(copy), QLatin1StringView(rename));
    };
    const auto both = QStringLiteral("新建公式夹 新建公式 ");
    const auto help = QStringLiteral("帮助");
    struct {
        const char* node;
        QString entries;
        QString buttons;
    } const cases[] = {
        {"库1", tree("NewFolder", "(Del)", "(MoveUp)", "(MoveDown)", "(Copy)", "(Rename)"),
         both + help},
        {"梁", tree("NewFolder", "Del", "(MoveUp)", "MoveDown", "Copy", "Rename"),
         both + QStringLiteral("复制 删除 下移 帮助")},
        {"柱", tree("NewFolder", "Del", "MoveUp", "MoveDown", "Copy", "Rename"),
         both + QStringLiteral("复制 删除 上移 下移 帮助")},
        {"板", tree("NewFolder", "Del", "MoveUp", "(MoveDown)", "Copy", "Rename"),
         both + QStringLiteral("复制 删除 上移 帮助")},
        {"管", tree("NewFolder", "Del", "(MoveUp)", "MoveDown", "Copy", "Rename"),
         both + QStringLiteral("复制 删除 下移 帮助")},
    };
    for (const auto& each : cases) {
        const QString node = QString::fromUtf8(each.node);
        desk.clickNode(node);
        EXPECT_EQ(buttons(), each.buttons) << each.node;
        desk.clickNode(QStringLiteral("简支"));
        desk.openMenu(desk.tree(), node);
        EXPECT_EQ(entries(), each.entries) << each.node;
        EXPECT_EQ(buttons(), each.buttons) << each.node;
        EXPECT_EQ(desk.tree().selectedIndex().data().toString(), node);
    }
}

TEST_F(Offering, TheListOffersByPositionOfTheItem) {
    const auto list = [](const char* del, const char* up, const char* down, const char* copy,
                         const char* rename) {
        return QStringLiteral(
                   "NewFormula %1 Line4 (LocateFormula) (VarSource) Line1 %2 %3 Line2 "
                   "%4 (Paste) Line3 %5")
            .arg(QLatin1StringView(del), QLatin1StringView(up), QLatin1StringView(down),
                 QLatin1StringView(copy), QLatin1StringView(rename));
    };
    const auto both = QStringLiteral("新建公式夹 新建公式 ");
    struct {
        const char* node;
        const char* formula;
        QString entries;
        QString buttons;
    } const cases[] = {
        {"梁", "弯曲", list("Del", "(MoveUp)", "MoveDown", "Copy", "Rename"),
         both + QStringLiteral("复制 删除 下移 帮助")},
        {"梁", "剪切", list("Del", "MoveUp", "MoveDown", "Copy", "Rename"),
         both + QStringLiteral("复制 删除 上移 下移 帮助")},
        {"梁", "扭转", list("Del", "MoveUp", "(MoveDown)", "Copy", "Rename"),
         both + QStringLiteral("复制 删除 上移 帮助")},
        {"简支", "挠度", list("Del", "(MoveUp)", "MoveDown", "Copy", "Rename"),
         both + QStringLiteral("复制 删除 下移 帮助")},
    };
    for (const auto& each : cases) {
        desk.clickNode(QString::fromUtf8(each.node));
        desk.clickFormula(QString::fromUtf8(each.formula));
        EXPECT_EQ(buttons(), each.buttons) << each.formula;
        desk.clickNode(QString::fromUtf8(each.node));
        desk.openMenu(desk.list(), QString::fromUtf8(each.formula));
        EXPECT_EQ(entries(), each.entries) << each.formula;
        EXPECT_EQ(buttons(), each.buttons) << each.formula;
    }
    desk.clickEmptySpace(desk.list());
    EXPECT_EQ(buttons(), both + QStringLiteral("帮助"));
    desk.clickFormula(QStringLiteral("挠度"));
    desk.clickEmptySpace(desk.list(), Qt::RightButton);
    EXPECT_EQ(entries(), list("(Del)", "(MoveUp)", "(MoveDown)", "(Copy)", "(Rename)"));
    EXPECT_EQ(buttons(), both + QStringLiteral("帮助"));
    EXPECT_TRUE(desk.list().selectedKey().isEmpty());
    desk.clickNode(QStringLiteral("板"));
    desk.openMenu(desk.tree(), QStringLiteral("板"));
    desk.menu().close();
    desk.clickEmptySpace(desk.list(), Qt::RightButton);
    EXPECT_EQ(entries(), list("(Del)", "(MoveUp)", "(MoveDown)", "(Copy)", "(Rename)"));
}

TEST_F(Offering, TheKeyForMenusSpeaksOfTheSelectedItem) {
    desk.clickNode(QStringLiteral("柱"));
    QContextMenuEvent key(QContextMenuEvent::Keyboard, {}, {});
    QCoreApplication::sendEvent(&desk.tree(), &key);
    EXPECT_TRUE(entries().contains(QStringLiteral(" MoveUp MoveDown ")));
}

TEST_F(Offering, EmptySpaceOfTheTreeSpeaksOfTheSelectedNode) {
    desk.clickNode(QStringLiteral("柱"));
    desk.clickFormula(QStringLiteral("稳定"));
    desk.clickEmptySpace(desk.tree(), Qt::RightButton);
    EXPECT_TRUE(entries().contains(QStringLiteral(" MoveUp MoveDown ")));
}

TEST_F(Offering, AnEmptyTreeShowsItsMenuWithEveryEntryDisabled) {
    const TestConfiguration none;
    none.write("[Access]\nNodeCount=0\n");
    Desk empty(none.folder());
    empty.clickEmptySpace(empty.tree(), Qt::RightButton);
    EXPECT_EQ(empty.menu().actions().size(), 14);
    for (const QAction* action : empty.menu().actions()) {
        EXPECT_TRUE(action->isSeparator() || !action->isEnabled());
    }
    empty.menu().close();
}

TEST_F(Offering, MenuAndToolBarShowTheSameActionsWithTheirShortcuts) {
    desk.openMenu(desk.tree(), QStringLiteral("柱"));
    const QList<QAction*> buttons = desk.child<QToolBar>("tbEdit").actions();
    struct {
        const char* entry;
        const char* caption;
        const char* shortcut;
        bool isButton;
    } const cases[] = {
        {"mnuPopFormulaDB", "公式库管理", "", false},
        {"mnuPopNewFolder", "新建公式夹", "", true},
        {"mnuPopDel", "删除", "Del", true},
        {"mnuPopLocateNode", "节点定位条件", "", false},
        {"mnuPopMoveUp", "上移", "", true},
        {"mnuPopMoveDown", "下移", "", true},
        {"mnuPopCopy", "复制", "Ctrl+C", true},
        {"mnuPopPaste", "粘贴", "Ctrl+V", true},
        {"mnuPopRename", "重命名", "F2", false},
    };
    for (const auto& each : cases) {
        const QList<QAction*> entries = desk.menu().actions();
        const auto found =
            std::ranges::find(entries, QString::fromLatin1(each.entry), &QObject::objectName);
        ASSERT_NE(found, entries.end()) << each.entry;
        EXPECT_EQ((*found)->text(), QString::fromUtf8(each.caption));
        EXPECT_EQ((*found)->shortcut().toString(), QString::fromLatin1(each.shortcut));
        EXPECT_EQ(buttons.contains(*found), each.isButton) << each.entry;
    }
    desk.menu().close();
}

/// With every command connected, so that the rules alone decide.
TEST(EditActions, OffersByCommandStateAndClipboard) {
    QWidget parent;
    Form form = buildForm(&parent);
    RecordingQuestions questions;
    ControlState state(questions);
    QStandardItemModel three(3, 1);
    for (ui::NodeView* view : {form.tvFolder, form.lvFormula}) {
        view->setModel(&three);
        view->selectItem(three.index(1, 0));
    }
    EditActions actions(form, state);
    for (int command = 0; command <= static_cast<int>(EditCommand::Help); ++command) {
        actions.connectCommand(static_cast<EditCommand>(command), [] {});
    }
    const auto enabled = [&] {
        QStringList captions;
        for (int command = 0; command <= static_cast<int>(EditCommand::Help); ++command) {
            const QAction& action = actions.action(static_cast<EditCommand>(command));
            if (action.isEnabled()) {
                captions.append(action.text());
            }
        }
        return captions.join(u' ');
    };
    struct {
        int state;
        Clipboard::Kind pasted;  ///< kind of clipboard that can be pasted there
        const char* offered;
    } const cases[] = {
        {1, Clipboard::Empty, ""},
        {2, Clipboard::Folders, "公式库管理 新建公式夹 新建公式 节点定位条件 查找 帮助"},
        {3, Clipboard::Folders,
         "公式库管理 新建公式夹 新建公式 删除 节点定位条件 上移 下移 复制 重命名 查找 帮助"},
        {4, Clipboard::Formula,
         "新建公式夹 新建公式 删除 公式定位条件 变量值来源 上移 下移 复制 重命名 查找 帮助"},
        {5, Clipboard::Formula, "新建公式夹 新建公式 查找 帮助"},
        {6, Clipboard::Empty, ""},
        {-1, Clipboard::Empty, ""},
    };
    for (const bool filled : {false, true}) {
        for (const auto& each : cases) {
            for (const int kind : {Clipboard::Empty, Clipboard::Folders, Clipboard::Formula}) {
                state.clipboard.kind = kind;
                state.commandState = static_cast<CommandState>(each.state);
                actions.setCommandState(state.commandState);
                const bool pastes = filled && kind != Clipboard::Empty && kind == each.pasted;
                EXPECT_EQ(actions.action(EditCommand::Paste).isEnabled(), pastes);
                actions.clipboardChanged();
                EXPECT_EQ(actions.action(EditCommand::Paste).isEnabled(), pastes);
                actions.setEnabled(EditCommand::Paste, false);
                EXPECT_EQ(enabled(), QString::fromUtf8(each.offered)) << each.state;
            }
        }
        if (!filled) {
            state.clipboard.folders.Add(1, {}, {}, {}, {}, 0, 0, {});
            state.clipboard.formulas.Add(1, {}, {}, {}, {}, 0, 0, {});
        }
    }
}

}  // namespace
}  // namespace varo::test
