#include "support/beam_desk.h"

#include <QContextMenuEvent>
#include <QToolBar>

namespace varo::test {
namespace {

class Offering : public BeamDesk {
  protected:
    /// Captions of the enabled buttons, but for help, find and the two that are always there.
    QString buttons() {
        QStringList enabled;
        for (const QAction* action : desk->child<QToolBar>("tbEdit").actions()) {
            if (action->isEnabled() && !action->isSeparator()) {
                enabled.append(action->text());
            }
        }
        EXPECT_EQ(enabled.takeLast(), u"帮助"_s);
        EXPECT_EQ(enabled.takeLast(), u"查找"_s);
        EXPECT_EQ(enabled.first(2).join(u' '), u"新建公式夹 新建公式"_s);
        return enabled.sliced(2).join(u' ');
    }

    /// The enabled entries of the open menu without their prefix, and closes it.
    QString entries() {
        QStringList enabled;
        EXPECT_TRUE(desk->menu().isVisible());
        for (const QAction* action : desk->menu().actions()) {
            if (action->isEnabled() && !action->isSeparator()) {
                enabled.append(action->objectName().mid(6));
            }
        }
        desk->menu().close();
        return enabled.join(u' ');
    }

    struct Case {
        QString node;
        QString formula;
        QString entries;
        QString buttons;
    };
};

TEST_F(Offering, TreeAndListOfferByKindAndPositionOfTheItem) {
    const Case cases[] = {
        {u"库1"_s, {}, u"NewFolder"_s, {}},
        {u"梁"_s, {}, u"NewFolder Del MoveDown Copy Rename"_s, u"复制 删除 下移"_s},
        {u"柱"_s, {}, u"NewFolder Del MoveUp MoveDown Copy Rename"_s, u"复制 删除 上移 下移"_s},
        {u"板"_s, {}, u"NewFolder Del MoveUp Copy Rename"_s, u"复制 删除 上移"_s},
        {u"管"_s, {}, u"NewFolder Del MoveDown Copy Rename"_s, u"复制 删除 下移"_s},
        {u"梁"_s, u"弯曲"_s, u"NewFormula Del MoveDown Copy Rename"_s, u"复制 删除 下移"_s},
        {u"梁"_s, u"剪切"_s, u"NewFormula Del MoveUp MoveDown Copy Rename"_s,
         u"复制 删除 上移 下移"_s},
        {u"梁"_s, u"扭转"_s, u"NewFormula Del MoveUp Copy Rename"_s, u"复制 删除 上移"_s},
        {u"简支"_s, u"挠度"_s, u"NewFormula Del MoveDown Copy Rename"_s, u"复制 删除 下移"_s},
    };
    for (const Case& each : cases) {
        const bool inTree = each.formula.isEmpty();
        select(each.node, each.formula);
        EXPECT_EQ(buttons(), each.buttons);
        select(inTree ? u"悬臂"_s : each.node);
        desk->openMenu(inTree ? desk->tree() : desk->list(), inTree ? each.node : each.formula);
        EXPECT_EQ(entries(), each.entries);
        EXPECT_EQ(buttons(), each.buttons);
        EXPECT_EQ(selected(), each.node);
    }
}

TEST_F(Offering, EmptySpaceOfTheTreeAndTheKeyForMenusSpeakOfTheSelectedNode) {
    const QString ofColumns = u"NewFolder Del MoveUp MoveDown Copy Rename"_s;
    select(u"柱"_s, u"稳定"_s);
    desk->clickEmptySpace(desk->tree(), Qt::RightButton);
    EXPECT_EQ(entries(), ofColumns);
    select(u"柱"_s);
    QContextMenuEvent key(QContextMenuEvent::Keyboard, {}, {});
    QCoreApplication::sendEvent(&desk->tree(), &key);
    EXPECT_EQ(entries(), ofColumns);
    // That of the list speaks of no formula.
    desk->clickEmptySpace(desk->list());
    EXPECT_EQ(buttons(), QString());
    desk->clickFormula(u"稳定"_s);
    desk->clickEmptySpace(desk->list(), Qt::RightButton);
    EXPECT_EQ(entries(), u"NewFormula"_s);
    EXPECT_EQ(buttons(), QString());
    EXPECT_TRUE(desk->list().selectedKey().isEmpty());
    desk->openMenu(desk->tree(), u"板"_s);
    desk->menu().close();
    desk->clickEmptySpace(desk->list(), Qt::RightButton);
    EXPECT_EQ(entries(), u"NewFormula"_s);
}

TEST_F(Offering, PasteIsOfferedWhereWhatWasCopiedFits) {
    const auto offered = [&] { return desk->editButton(u"粘贴"_s).isEnabled(); };
    for (const bool folders : {false, true}) {
        select(u"梁"_s, folders ? QString() : u"弯曲"_s);
        press(u"复制"_s);
        EXPECT_TRUE(offered());
        select(u"库2"_s);
        EXPECT_EQ(offered(), folders);
        select(u"柱"_s);
        EXPECT_EQ(offered(), folders);
        desk->clickFormula(u"稳定"_s);
        EXPECT_EQ(offered(), !folders);
        desk->clickEmptySpace(desk->list());
        EXPECT_EQ(offered(), !folders);
    }
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
    const QList<QAction*> buttons = desk->child<QToolBar>("tbEdit").actions();
    const auto described = [&] {
        QStringList entries;
        for (const QAction* entry : desk->menu().actions()) {
            EXPECT_TRUE(entry->isSeparator() || !entry->icon().isNull());
            entries.append(entry->objectName().mid(6) + entry->text() +
                           entry->shortcut().toString() +
                           (buttons.contains(entry) ? u"*"_s : QString()));
        }
        desk->menu().close();
        return entries.join(u' ');
    };
    const QString common =
        u"MoveUp上移* MoveDown下移* Line2 Copy复制Ctrl+C* Paste粘贴Ctrl+V* "
        "Line3 Rename重命名F2"_s;
    desk->openMenu(desk->tree(), u"柱"_s);
    EXPECT_EQ(described(),
              u"FormulaDB公式库管理 Line5 NewFolder新建公式夹* Del删除Del* Line4 "
              "LocateNode节点定位条件 Line1 "_s +
                  common);
    desk->openMenu(desk->list(), u"稳定"_s);
    EXPECT_EQ(described(),
              u"NewFormula新建公式* Del删除Del* Line4 LocateFormula公式定位条件 "
              "VarSource变量值来源 Line1 "_s +
                  common);
    QStringList captions;
    for (const QAction* action : buttons) {
        captions.append(action->text());
        EXPECT_TRUE(action->isSeparator() || !action->icon().isNull());
        EXPECT_TRUE(action->isSeparator() || action->toolTip() == action->text());
    }
    EXPECT_EQ(captions.join(u' ').simplified(),
              u"新建公式夹 新建公式 复制 粘贴 删除 上移 下移 查找 查找下一个 查找上一个 帮助"_s);
    desk->clickEditButton(u"帮助"_s);
    EXPECT_EQ(told(), u"无法找到帮助文件！"_s);
}

}  // namespace
}  // namespace varo::test
