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
    desk->clickEmptySpace(desk->list());
    desk->control().SelFormula(u"LvFormulaKey%1"_s.arg(torsion));
    press(desk->list(), Qt::Key_Delete);
    EXPECT_EQ(asked(), QString()) << "the choice has been taken back";
    desk->clickFormula(u"剪切"_s);
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

TEST_F(Keyboard, NothingElseIsShownWhileTheDescriptionIsTooLongAndARightClickOpensNoMenu) {
    select(u"梁"_s, u"弯曲"_s);
    desk->click(desk->child("optDesc0"), Qt::LeftButton, {8, 8});
    auto& description = desk->child<QPlainTextEdit>("txtDesc");
    description.setFocus();
    description.setPlainText(QString(256, u'长'));
    const std::function<void()> steps[] = {
        [&] { desk->openMenu(desk->list(), u"剪切"_s); },
        [&] { desk->openMenu(desk->tree(), u"柱"_s); },
        [&] { desk->clickEmptySpace(desk->list(), Qt::RightButton); },
        [&] { desk->clickFormula(u"剪切"_s); },
        [&] { desk->clickNode(u"库1"_s); },
        [&] { desk->control().SetDesignProp(u"用途"_s); },
    };
    for (const auto& step : steps) {
        step();
        EXPECT_FALSE(desk->menu().isVisible());
        EXPECT_EQ(selected(), u"梁"_s);
        EXPECT_EQ(desk->list().selectedIndex().row(), 0);
        EXPECT_EQ(description.toPlainText().size(), 256);
    }
    EXPECT_EQ(told(), u"用户输入的说明超过255个字符！"_s) << "once";
    description.setPlainText(u"短"_s);
    start();
    EXPECT_EQ(first.rows(u"Select Memo From Formula"_s).first(), u"短"_s)
        << "stored when the control goes";
}

TEST_F(Keyboard, ANameTakesOneLineAndIsToldWholeWhereItIsCut) {
    const QString name = u"上\n下"_s + QString(37, u'长');
    first.addFolder(0, name);
    first.addFormula(beams, u"一\n二"_s);
    start();
    const QModelIndex item = Desk::find(desk->tree(), QString(name).replace(u'\n', u' '));
    ASSERT_TRUE(item.isValid());
    EXPECT_LE(desk->tree().visualRect(item).right(), desk->tree().viewport()->width());
    EXPECT_EQ(desk->tree().textElideMode(), Qt::ElideRight);
    EXPECT_TRUE(item.data(Qt::ToolTipRole).toString().contains(name.last(37)));
    select(u"梁"_s);
    EXPECT_EQ(desk->listTexts().last(), u"一 二"_s);
}

}  // namespace
}  // namespace varo::test
