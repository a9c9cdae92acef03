#include "support/beam_desk.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalSpy>

namespace varo::test {
namespace {

class Keyboard : public BeamDesk {
  protected:
    void press(QWidget& target, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        target.setFocus();
        desk->pressKey(key, modifiers);
    }
};

TEST_F(Keyboard, HelpAndTheStepsOfALocateAreReachedFromAnywhereInTheControl) {
    first.addProperty(1, u"形"_s, 0, shear, NodeTypeFormula);
    first.addProperty(1, u"形"_s, 0, columns, NodeTypeFolder);
    start();
    for (QWidget* target : {static_cast<QWidget*>(&desk->formulaBox()),
                            static_cast<QWidget*>(&desk->tree()), &desk->child("cmdCalCulate")}) {
        desk->control().SetDesignProp(u"形"_s);
        EXPECT_EQ(selected(), u"梁"_s);
        press(*target, Qt::Key_F3);
        EXPECT_EQ(selected(), u"柱"_s) << target->objectName().toStdString();
        press(*target, Qt::Key_F3, Qt::ShiftModifier);
        EXPECT_EQ(selected(), u"梁"_s);
        press(*target, Qt::Key_F1);
        EXPECT_EQ(told(), u"无法找到帮助文件！"_s);
    }
    desk->control().RunCalc();
}

TEST_F(Keyboard, AnOfferedKeyIsTakenBeforeTheHostsOwnShortcut) {
    QAction hostAction;
    hostAction.setShortcuts({Qt::Key_F1, Qt::Key_F3});
    QSignalSpy triggered(&hostAction, &QAction::triggered);
    desk->addAction(&hostAction);
    press(desk->tree(), Qt::Key_F1);
    EXPECT_EQ(told(), u"无法找到帮助文件！"_s);
    EXPECT_TRUE(triggered.isEmpty());
    press(desk->tree(), Qt::Key_F3);
    EXPECT_EQ(triggered.size(), 1) << "nothing has been located";
}

TEST_F(Keyboard, DeleteInTheListNeedsAFormulaThatTheUserHasChosenThere) {
    select(u"梁"_s);
    press(desk->list(), Qt::Key_Delete);
    EXPECT_EQ(asked(), QString()) << "shown with its folder only";
    press(desk->list(), Qt::Key_Down);
    press(desk->list(), Qt::Key_Delete);
    EXPECT_EQ(asked(), u"确实要删除公式-[剪切]吗？"_s);
    desk->control().SelFormula(u"LvFormulaKey%1"_s.arg(torsion));
    select(u"柱"_s);
    press(desk->list(), Qt::Key_Delete);
    EXPECT_EQ(asked(), QString()) << "the choice was made in another folder";
}

TEST_F(Keyboard, OpeningAllNodesSelectsNoneOfThem) {
    desk->tree().collapseAll();
    select(u"库1"_s);
    press(desk->tree(), Qt::Key_Asterisk);
    EXPECT_EQ(selected(), u"库1"_s);
    EXPECT_TRUE(desk->tree().isExpanded(Desk::find(desk->tree(), u"梁"_s)));
}

TEST_F(Keyboard, RunCalcLeavesTheFocusInTheTreeIfItWasInTheControl) {
    for (const bool within : {true, false}) {
        Desk fresh;
        QLineEdit outside(&fresh);
        outside.show();
        if (within) {
            fresh.child("lblDesc").setFocus();
        } else {
            outside.setFocus();
        }
        fresh.run(configuration.folder());
        EXPECT_EQ(QApplication::focusWidget(),
                  within ? static_cast<QWidget*>(&fresh.tree()) : &outside);
    }
}

TEST_F(Keyboard, ARightClickWhoseSelectionIsRefusedOpensNoMenu) {
    select(u"梁"_s, u"弯曲"_s);
    desk->click(desk->child("optDesc0"), Qt::LeftButton, {8, 8});
    auto& description = desk->child<QPlainTextEdit>("txtDesc");
    description.setFocus();
    description.setPlainText(QString(256, u'长'));
    desk->openMenu(desk->list(), u"剪切"_s);
    EXPECT_FALSE(desk->menu().isVisible());
    desk->openMenu(desk->tree(), u"柱"_s);
    EXPECT_FALSE(desk->menu().isVisible());
    desk->clickEmptySpace(desk->list(), Qt::RightButton);
    EXPECT_FALSE(desk->menu().isVisible());
    EXPECT_EQ(selected(), u"梁"_s);
    EXPECT_EQ(told(), u"用户输入的说明超过255个字符！"_s);
    description.setPlainText(u"短"_s);
}

TEST_F(Keyboard, NoKeyIsTakenForTheOneOfAnotherFormula) {
    select(u"梁"_s);
    const QString shown = desk->list().selectedKey();
    for (const QString& key : {u"LvFormulaKey02"_s, u"LvFormulaKey 2"_s, u"LvFormulaKeyX"_s}) {
        desk->control().SelFormula(key);
        EXPECT_EQ(desk->list().selectedKey(), shown) << key.toStdString();
    }
}

TEST_F(Keyboard, ANameThatTheTreeIsTooNarrowForIsCutAndToldWhole) {
    const QString name(40, u'长');
    first.addFolder(0, name);
    start();
    const QModelIndex item = Desk::find(desk->tree(), name);
    EXPECT_LE(desk->tree().visualRect(item).right(), desk->tree().viewport()->width());
    EXPECT_EQ(desk->tree().textElideMode(), Qt::ElideRight);
    EXPECT_TRUE(item.data(Qt::ToolTipRole).toString().contains(name));
}

}  // namespace
}  // namespace varo::test
