#include "support/beam_desk.h"

#include <QContextMenuEvent>
#include <QToolBar>

namespace varo::test {
namespace {

class Offering : public BeamDesk {
  protected:
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
};

TEST_F(Offering, TreeAndListOfferByKindAndPositionOfTheItem) {
    const std::tuple<QString, QString, QString> cases[] = {
        {u"库1"_s, u""_s, u"FormulaDB NewFolder LocateNode"_s},
        {u"梁"_s, u""_s, u"FormulaDB NewFolder Del LocateNode MoveDown Copy Rename"_s},
        {u"柱"_s, u""_s, u"FormulaDB NewFolder Del LocateNode MoveUp MoveDown Copy Rename"_s},
        {u"板"_s, u""_s, u"FormulaDB NewFolder Del LocateNode MoveUp Copy Rename"_s},
        {u"管"_s, u""_s, u"FormulaDB NewFolder Del LocateNode MoveDown Copy Rename"_s},
        {u"梁"_s, u"弯曲"_s, u"NewFormula Del LocateFormula VarSource MoveDown Copy Rename"_s},
        {u"梁"_s, u"剪切"_s,
         u"NewFormula Del LocateFormula VarSource MoveUp MoveDown Copy Rename"_s},
        {u"梁"_s, u"扭转"_s, u"NewFormula Del LocateFormula VarSource MoveUp Copy Rename"_s},
        {u"简支"_s, u"挠度"_s, u"NewFormula Del LocateFormula VarSource MoveDown Copy Rename"_s},
    };
    for (const auto& [node, formula, offered] : cases) {
        const bool inTree = formula.isEmpty();
        select(node, formula);
        for (const auto& [caption, entry] :
             {std::pair{u"复制"_s, u"Copy"_s}, {u"上移"_s, u"Up"_s}, {u"下移"_s, u"Down"_s}}) {
            EXPECT_EQ(desk->editButton(caption).isEnabled(), offered.contains(entry));
        }
        EXPECT_TRUE(desk->editButton(u"新建公式"_s).isEnabled());
        select(inTree ? u"悬臂"_s : node);
        desk->openMenu(inTree ? desk->tree() : desk->list(), inTree ? node : formula);
        EXPECT_EQ(entries(), offered);
        EXPECT_EQ(selected(), node);
    }
}

TEST_F(Offering, EmptySpaceOfTheTreeAndTheKeyForMenusSpeakOfTheSelectedNode) {
    const QString ofColumns = u"FormulaDB NewFolder Del LocateNode MoveUp MoveDown Copy Rename"_s;
    select(u"柱"_s, u"稳定"_s);
    desk->clickEmptySpace(desk->tree(), Qt::RightButton);
    EXPECT_EQ(entries(), ofColumns);
    select(u"柱"_s);
    QContextMenuEvent key(QContextMenuEvent::Keyboard, {}, {});
    QCoreApplication::sendEvent(&desk->tree(), &key);
    EXPECT_EQ(entries(), ofColumns);
    // That of the list speaks of no formula.
    desk->clickEmptySpace(desk->list());
    EXPECT_FALSE(desk->editButton(u"删除"_s).isEnabled());
    desk->clickFormula(u"稳定"_s);
    desk->clickEmptySpace(desk->list(), Qt::RightButton);
    EXPECT_EQ(entries(), u"NewFormula"_s);
    EXPECT_FALSE(desk->editButton(u"删除"_s).isEnabled());
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

TEST_F(Offering, AnEmptyTreeOffersTheLibraryManagerWhereThereIsAConfigurationFile) {
    const TestConfiguration none;
    none.write("[Access]\nNodeCount=0\n");
    Desk empty(none.folder());
    for (const bool isThere : {true, false}) {
        if (!isThere) {
            none.removeFile();
        }
        empty.clickEmptySpace(empty.tree(), Qt::RightButton);
        EXPECT_EQ(empty.menu().actions().size(), 14);
        for (const QAction* action : empty.menu().actions()) {
            const bool offered = isThere && action->text() == u"公式库管理";
            EXPECT_TRUE(action->isSeparator() || action->isEnabled() == offered);
        }
        EXPECT_EQ(empty.editButton(u"公式库管理"_s).isEnabled(), isThere);
        empty.menu().close();
    }
}

TEST_F(Offering, MenuAndToolBarShowTheSameActionsWithIconsAndShortcuts) {
    const QList<QAction*> buttons = desk->child<QToolBar>("tbEdit").actions();
    QStringList entries;
    desk->openMenu(desk->tree(), u"柱"_s);
    for (const QAction* entry : desk->menu().actions()) {
        entries.append(entry->objectName().mid(6) + entry->shortcut().toString() +
                       (buttons.contains(entry) ? u"*"_s : QString()));
    }
    EXPECT_EQ(entries.join(u' '),
              u"FormulaDB* Line5 NewFolder* DelDel* Line4 LocateNode Line1 MoveUp* MoveDown* Line2 "
              "CopyCtrl+C* PasteCtrl+V* Line3 RenameF2"_s);
    for (const QAction* action : buttons + desk->menu().actions()) {
        EXPECT_TRUE(action->isSeparator() || !action->icon().isNull());
    }
    desk->menu().close();
    desk->clickEditButton(u"帮助"_s);
    EXPECT_EQ(told(), u"无法找到帮助文件！"_s);
}

}  // namespace
}  // namespace varo::test
