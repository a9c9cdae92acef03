#include "editing/beam_desk.h"

#include <QFileInfo>
#include <QTest>

namespace varo::test {
namespace {

class FormulaCommand : public BeamDesk {};

TEST_F(FormulaCommand, NewFormulaComesLastIsShownAndOpensItsLabel) {
    desk.clickNode(QStringLiteral("梁"));
    desk.clickEditButton(QStringLiteral("新建公式"));
    EXPECT_EQ(
        first.rows(QStringLiteral("Select Name,Formula,Memo,PicType,PID,OrderID From Formula"))
            .last(),
        QStringLiteral("新建公式|||0|%1|4").arg(beams));
    EXPECT_EQ(desk.listTexts().last(), QStringLiteral("新建公式"));
    EXPECT_EQ(desk.list().selectedIndex().row(), 3);
    ASSERT_NE(desk.labelEditor(), nullptr);
    EXPECT_TRUE(desk.labelEditor()->hasFocus());
    EXPECT_TRUE(desk.isEnabled("txtFormula"));
    EXPECT_TRUE(showsWhatIsStored(desk));
    desk.typeLabel(QStringLiteral("压弯"));
    EXPECT_EQ(desk.listTexts().last(), QStringLiteral("压弯"));
    desk.type(desk.formulaBox(), QStringLiteral("N/A"));
    desk.list().setFocus();
    EXPECT_EQ(first.rows(QStringLiteral("Select Name,Formula From Formula")).last(),
              QStringLiteral("压弯|N/A"));
}

TEST_F(FormulaCommand, NewFormulaOfALibraryIsOfItsTopLevel) {
    desk.clickNode(QStringLiteral("库2"));
    desk.clickEmptySpace(desk.list(), Qt::RightButton);
    desk.choose("mnuPopNewFormula");
    desk.typeLabel(QStringLiteral("总"));
    EXPECT_EQ(second.rows(QStringLiteral("Select Name,PID,OrderID From Formula")).last(),
              QStringLiteral("总|0|1"));
}

TEST_F(FormulaCommand, DeletingShowsTheFirstThatIsLeftAndThenNone) {
    first.addProperty(1, QStringLiteral("形"), 0, shear, NodeTypeFormula);
    first.addProperty(1, QStringLiteral("形"), 0, deflection, NodeTypeFormula);
    desk.clickNode(QStringLiteral("梁"));
    desk.questions().answers = {true, true, true};
    desk.openMenu(desk.list(), QStringLiteral("剪切"));
    desk.choose("mnuPopDel");
    EXPECT_EQ(desk.questions().asked, QStringList{QStringLiteral("确实要删除公式-[剪切]吗？")});
    EXPECT_EQ(first.rows(QStringLiteral("Select NodeID,NodeType From Property")),
              QStringList{QStringLiteral("%1|2").arg(deflection)});
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("M/W"));
    desk.clickEditButton(QStringLiteral("删除"));
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("T/W"));
    QTest::keyClick(&desk.list(), Qt::Key_Delete);
    EXPECT_TRUE(desk.listTexts().isEmpty());
    EXPECT_TRUE(desk.formulaBox().text().isEmpty());
    EXPECT_FALSE(desk.isEnabled("txtFormula"));
    EXPECT_FALSE(desk.editButton(QStringLiteral("删除")).isEnabled());
    EXPECT_TRUE(desk.editButton(QStringLiteral("新建公式")).isEnabled());
    QTest::keyClick(&desk.list(), Qt::Key_Delete);
    EXPECT_EQ(desk.questions().asked.size(), 3) << "nothing is selected";
}

TEST_F(FormulaCommand, TheDeleteKeyDoesNothingWhileNoFormulaIsSelected) {
    desk.clickNode(QStringLiteral("梁"));
    desk.clickFormula(QStringLiteral("剪切"));
    desk.clickEmptySpace(desk.list());
    QTest::keyClick(&desk.list(), Qt::Key_Delete);
    QTest::keyClick(&desk.list(), Qt::Key_F2);
    EXPECT_TRUE(desk.questions().asked.isEmpty());
    EXPECT_EQ(desk.labelEditor(), nullptr);
}

TEST_F(FormulaCommand, MovingExchangesNeighbours) {
    first.addProperty(1, QStringLiteral("形"), 0, bending, NodeTypeFormula);
    desk.clickNode(QStringLiteral("梁"));
    desk.clickFormula(QStringLiteral("剪切"));
    desk.clickEditButton(QStringLiteral("上移"));
    EXPECT_EQ(desk.listTexts(), (QStringList{QStringLiteral("剪切"), QStringLiteral("弯曲"),
                                             QStringLiteral("扭转")}));
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("3*Q/(2*b*h)"));
    EXPECT_FALSE(desk.editButton(QStringLiteral("上移")).isEnabled());
    EXPECT_TRUE(showsWhatIsStored(desk));
    desk.openMenu(desk.list(), QStringLiteral("弯曲"));
    desk.choose("mnuPopMoveDown");
    EXPECT_EQ(desk.listTexts().last(), QStringLiteral("弯曲"));
    desk.clickNode(QStringLiteral("简支"));
    desk.clickFormula(QStringLiteral("挠度"));
    const QByteArray before = fileContent(first.path());
    desk.clickEditButton(QStringLiteral("下移"));
    EXPECT_EQ(fileContent(first.path()), before);
}

TEST_F(FormulaCommand, WhatIsBeingTypedIsStoredBeforeACommand) {
    desk.clickNode(QStringLiteral("梁"));
    desk.type(desk.formulaBox(), QStringLiteral("2*"));
    const QString typed = desk.formulaBox().text();
    desk.clickEditButton(QStringLiteral("新建公式"));
    EXPECT_EQ(first.rows(QStringLiteral("Select Formula From Formula")).first(), typed);
    desk.labelEditor()->setText(QStringLiteral("乙"));
    desk.clickEditButton(QStringLiteral("上移"));
    EXPECT_EQ(desk.listTexts().at(2), QStringLiteral("乙"));
    EXPECT_EQ(desk.labelEditor(), nullptr);
}

}  // namespace
}  // namespace varo::test
