#include "support/beam_desk.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QRadioButton>

#include <cstdlib>

namespace varo::test {
namespace {

/// 弯曲 has a picture and values; 梁 and 剪切 carry a property; 空白 has a description only.
class Selection : public BeamDesk {
  protected:
    Selection() {
        first.addPicture(bending, imageBytes({60, 40}, Qt::red, "bmp"));
        first.addValue(u"M"_s, bending, u"1200"_s);
        first.addValue(u"W"_s, bending, u"100"_s);
        first.addProperty(1, u"形"_s, 0, beams, NodeTypeFolder);
        first.addProperty(1, u"形"_s, 0, 4711, NodeTypeFolder);
        first.addProperty(1, u"形"_s, 0, shear, NodeTypeFormula);
        start();
    }

    QString formula() { return desk->formulaBox().text(); }
    QString description() { return desk->child<QPlainTextEdit>("txtDesc").toPlainText(); }
    /// Chooses the text or the picture of the description.
    void describe(const char* option) { desk->click(desk->child(option), Qt::LeftButton, {8, 8}); }
    static QImage image(const ui::NodeView& view, const QString& text) {
        return Desk::find(view, text).data(Qt::DecorationRole).value<QIcon>().pixmap(16).toImage();
    }

    const qint32 blank = first.addFormula(beams, u"空白"_s, {}, u"待定"_s);
};

TEST_F(Selection, ClickingAFolderListsItsFormulasAndShowsAndCalculatesTheFirst) {
    select(u"梁"_s);
    EXPECT_EQ(desk->listTexts().join(u' '), u"弯曲 剪切 扭转 空白"_s);
    EXPECT_EQ(desk->list().selectedKey(), u"LvFormulaKey1"_s);
    EXPECT_EQ(formula(), u"M/W"_s);
    EXPECT_EQ(desk->gridTexts().join(u' '), u"M=1200 W=100"_s);
    EXPECT_EQ(desk->result(), u"12.00"_s);
    EXPECT_TRUE(desk->isShown("imgDesc"));
    EXPECT_TRUE(desk->isEnabled("txtFormula"));
    EXPECT_FALSE(desk->isEnabled("tbSymbol0")) << "only while the formula box has the focus";
    desk->clickFormula(u"空白"_s);
    EXPECT_TRUE(formula().isEmpty());
    EXPECT_TRUE(desk->result().isEmpty()) << "none of the formula before";
    EXPECT_FALSE(desk->isEnabled("cmdCopy"));
    EXPECT_TRUE(desk->isEnabled("txtFormula"));
    EXPECT_EQ(description(), u"待定"_s);
}

TEST_F(Selection, AFolderWithoutFormulasAndEmptySpaceClearThePanel) {
    const std::function<void()> clears[] = {
        [&] { select(u"板"_s); },
        [&] { desk->clickEmptySpace(desk->list()); },
        [&] { desk->clickEmptySpace(desk->list(), Qt::RightButton); },
    };
    for (const auto& clear : clears) {
        select(u"梁"_s);
        EXPECT_TRUE(desk->isEnabled("txtFormula"));
        clear();
        desk->menu().close();
        EXPECT_TRUE(desk->list().selectedKey().isEmpty());
        EXPECT_TRUE(formula().isEmpty());
        EXPECT_TRUE(desk->result().isEmpty());
        EXPECT_EQ(desk->grid().Rows(), 1);
        EXPECT_TRUE(desk->isShown("lblDesc"));
        EXPECT_FALSE(desk->isShown("imgDesc"));
        EXPECT_TRUE(desk->isEnabled("tvFolder"));
        EXPECT_TRUE(desk->isEnabled("lvFormula"));
        EXPECT_FALSE(desk->isEnabled("txtFormula"));
    }
}

TEST_F(Selection, TheKeyboardSelectsAsTheMouseDoes) {
    desk->tree().setFocus();
    QTest::keyClick(&desk->tree(), Qt::Key_Down);
    EXPECT_EQ(selected(), u"梁"_s);
    EXPECT_EQ(formula(), u"M/W"_s);
    desk->list().setFocus();
    QTest::keyClick(&desk->list(), Qt::Key_Down);
    EXPECT_EQ(formula(), u"3*Q/(2*b*h)"_s);
    // Dragging selects nothing; the menu speaks of what is under the pointer.
    const auto centre = [&](const QString& text) {
        const QRect rect = desk->list().visualRect(Desk::find(desk->list(), text));
        return QPoint(rect.left() + 8, rect.center().y());
    };
    QWidget* viewport = desk->list().viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, centre(u"剪切"_s));
    QTest::mouseMove(viewport, centre(u"弯曲"_s));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, centre(u"弯曲"_s));
    EXPECT_EQ(desk->list().selectedKey(), u"LvFormulaKey2"_s);
    desk->openMenu(desk->list(), u"空白"_s);
    EXPECT_TRUE(formula().isEmpty());
    desk->menu().close();
    QTest::keyClick(&desk->list(), Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(formula().isEmpty(), !desk->list().selectedKey().isEmpty());
    select(u"梁"_s);
}

TEST_F(Selection, ALibraryThatCannotBeReadOrOpenedLeavesNothingToEdit) {
    select(u"梁"_s);
    const auto expectNothing = [&](const QString& message) {
        EXPECT_EQ(told(), message);
        EXPECT_TRUE(desk->listTexts().isEmpty());
        EXPECT_TRUE(formula().isEmpty());
        EXPECT_FALSE(desk->isEnabled("txtFormula"));
        select(u"梁"_s);
        EXPECT_EQ(desk->result(), u"12.00"_s);
    };
    {
        const MissingColumn missing(second, "Formula", "Memo");
        select(u"管"_s);
    }
    expectNothing(u"无法读取节点“管”下所有的公式！"_s);
    ASSERT_TRUE(QFile::rename(second.path(), second.pathOf(u"away"_s)));
    select(u"管"_s);
    expectNothing(u"无法打开用户指定的数据库！"_s);
    EXPECT_NE(image(desk->tree(), u"库1"_s), image(desk->tree(), u"库2"_s)) << "marked";
    ASSERT_TRUE(QFile::rename(second.pathOf(u"away"_s), second.path()));
    select(u"管"_s);
}

TEST_F(Selection, TheHostSelectsByKeyAndUnknownKeysDoNothing) {
    desk->control().ClickTreeNode(folder(beams));
    desk->control().SelFormula(u"LvFormulaKey2"_s);
    for (const QString& key : {u"FormulaNode99->DBNode1"_s, u"LvFormulaKey1"_s}) {
        desk->control().ClickTreeNode(key);
    }
    for (const QString& key :
         u"LvFormulaKey99,LvFormulaKey01,LvFormulaKey 1,LvFormulaKeyX,"
         "DBNode1,"_s.split(u',')) {
        desk->control().SelFormula(key);
    }
    EXPECT_EQ(formula(), u"3*Q/(2*b*h)"_s);
    EXPECT_EQ(selected(), u"梁"_s);
    EXPECT_EQ(told(), QString());
}

TEST_F(Selection, WhatIsBeingTypedIsStoredBeforeTheHostShowsAnotherAndWhenTheControlGoes) {
    select(u"梁"_s, u"扭转"_s);
    desk->type(desk->formulaBox(), u"2*"_s);
    beginTyping(desk->grid(), u"T"_s, u"44"_s);
    desk->control().SelFormula(u"LvFormulaKey%1"_s.arg(shear));
    desk->type(desk->formulaBox(), u"4*"_s);
    desk->control().ClickTreeNode(folder(columns));
    desk->type(desk->formulaBox(), u"5*"_s);
    start();
    EXPECT_EQ(first.rows(u"Select Formula From Formula Where ID In (2, 3, 5)"_s),
              (QStringList{u"4*3*Q/(2*b*h)"_s, u"2*T/W"_s, u"5*P/A"_s}));
    EXPECT_EQ(first.rows(u"Select FormulaID, Value From RecentVar Where VarName = 'T'"_s),
              QStringList{u"3|44"_s});
}

TEST_F(Selection, TheDescriptionOptionsSwitchBetweenTextAndPicture) {
    select(u"梁"_s);
    describe("optDesc0");
    EXPECT_TRUE(desk->isShown("txtDesc"));
    EXPECT_FALSE(desk->isShown("imgDesc"));
    describe("optDesc1");
    EXPECT_TRUE(desk->isShown("imgDesc"));
    desk->clickFormula(u"剪切"_s);
    for (const char* option : {"optDesc1", "optDesc0", "optDesc1"}) {
        EXPECT_FALSE(desk->isShown("imgDesc"));
        describe(option);
    }
    EXPECT_EQ(desk->child<QLabel>("lblDesc").text(), u"无图片"_s);
    EXPECT_TRUE(desk->isShown("lblDesc"));
    EXPECT_EQ(told(), QString());
}

TEST_F(Selection, TheKeyboardActsOnTheStrongerOfTheTwoSelections) {
    select(u"梁"_s, u"弯曲"_s);
    /// How far the colour behind the selected label is from that of empty space.
    const auto strength = [](ui::NodeView& view) {
        const QImage shown = view.viewport()->grab().toImage();
        const QRect row = view.visualRect(view.selectedIndex());
        const int behind =
            qGray(shown.pixel(std::min(row.right(), shown.width()) - 4, row.top() + 2));
        return std::abs(qGray(shown.pixel(4, shown.height() - 4)) - behind);
    };
    for (const bool inTree : {true, false}) {
        ui::NodeView& focused = inTree ? desk->tree() : desk->list();
        ui::NodeView& other = inTree ? desk->list() : desk->tree();
        focused.setFocus();
        settle();
        EXPECT_GT(strength(other), 20);
        EXPECT_GT(strength(focused), strength(other) + 40);
    }
}

TEST_F(Selection, ItemsThatCarryPropertiesLookDifferent) {
    select(u"梁"_s);
    EXPECT_NE(image(desk->tree(), u"梁"_s), image(desk->tree(), u"管"_s));
    EXPECT_NE(image(desk->list(), u"弯曲"_s), image(desk->list(), u"剪切"_s));
    EXPECT_EQ(image(desk->list(), u"弯曲"_s), image(desk->list(), u"空白"_s));
}

}  // namespace
}  // namespace varo::test
