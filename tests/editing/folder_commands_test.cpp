#include "editing/beam_desk.h"

#include <QTest>

namespace varo::test {
namespace {

class FolderCommand : public BeamDesk {};

TEST_F(FolderCommand, NewFolderComesLastIsSelectedAndOpensItsLabel) {
    desk.clickNode(QStringLiteral("梁"));
    desk.clickEditButton(QStringLiteral("新建公式夹"));
    EXPECT_EQ(first.rows(QStringLiteral("Select Name,PID,OrderID From Tree Order By ID")).last(),
              QStringLiteral("新建公式夹|%1|3").arg(beams));
    EXPECT_EQ(desk.tree().selectedIndex().data().toString(), QStringLiteral("新建公式夹"));
    EXPECT_TRUE(desk.listTexts().isEmpty());
    ASSERT_NE(desk.labelEditor(), nullptr);
    EXPECT_EQ(desk.labelEditor()->selectedText(), QStringLiteral("新建公式夹"));
    EXPECT_TRUE(showsWhatIsStored(desk));
    desk.typeLabel(QStringLiteral("拱"));
    EXPECT_EQ(first.rows(QStringLiteral("Select Name From Tree Order By ID")).last(),
              QStringLiteral("拱"));
}

TEST_F(FolderCommand, NewFolderBelowALibraryIsOfTheTopLevelAndKeepsItsNameOnEscape) {
    desk.openMenu(desk.tree(), QStringLiteral("库2"));
    desk.choose("mnuPopNewFolder");
    desk.typeLabel(QStringLiteral("拱"), Qt::Key_Escape);
    EXPECT_EQ(second.rows(QStringLiteral("Select Name,PID,OrderID From Tree")).last(),
              QStringLiteral("新建公式夹|0|2"));
    EXPECT_EQ(desk.labelEditor(), nullptr);
}

TEST_F(FolderCommand, NewFolderGoesToTheLibraryOfANodeThatWasSelectedByOpeningIt) {
    desk.clickNode(QStringLiteral("梁"));
    const QModelIndex other = Desk::find(desk.tree(), QStringLiteral("库2"));
    desk.tree().collapse(other);
    const QRect rect = desk.tree().visualRect(other);
    QTest::mouseClick(desk.tree().viewport(), Qt::LeftButton, {},
                      {rect.left() - 7, rect.center().y()});
    settle();
    ASSERT_EQ(desk.tree().selectedKey(), QStringLiteral("DBNode2"));
    desk.clickEditButton(QStringLiteral("新建公式夹"));
    EXPECT_EQ(second.rows(QStringLiteral("Select Name From Tree")).size(), 2);
    EXPECT_EQ(first.rows(QStringLiteral("Select Name From Tree")).size(), 5);
}

TEST_F(FolderCommand, NoFolderIsMadeBelowTheDeepestLevelThatIsShown) {
    data::Transaction transaction(first.connection());
    qint32 deepest = beams;
    for (int level = 2; level <= 1000; ++level) {
        deepest = first.addFolder(deepest, QStringLiteral("层"));
    }
    transaction.commit();
    Desk deep(configuration.folder());
    deep.control().ClickTreeNode(folder(deepest));
    deep.clickEditButton(QStringLiteral("新建公式夹"));
    EXPECT_EQ(deep.messages(), QStringList{QStringLiteral("无法创建新的公式夹！")});
    first.connection().execute(QStringLiteral("Delete From Tree Where Name = '层'"));
}

TEST_F(FolderCommand, DeletingAFolderRemovesItsSubtreeDeepestFirst) {
    first.addProperty(1, QStringLiteral("形"), 0, beams, NodeTypeFolder);
    first.addProperty(1, QStringLiteral("形"), 0, simple, NodeTypeFolder);
    first.addProperty(1, QStringLiteral("形"), 0, 4711, NodeTypeFolder);
    first.addProperty(1, QStringLiteral("形"), 0, deflection, NodeTypeFormula);
    first.addProperty(1, QStringLiteral("形"), 0, shear, NodeTypeFormula);
    first.connection().execute(QStringLiteral("Create Table Gone(ID)"));
    first.connection().execute(
        QStringLiteral("Create Trigger Watch After Delete On Tree Begin "
                       "Insert Into Gone Values(old.ID); End"));
    desk.clickNode(QStringLiteral("梁"));
    desk.questions().answers = {true};
    desk.clickEditButton(QStringLiteral("删除"));
    // A file with a trigger is not opened again.
    first.connection().execute(QStringLiteral("Drop Trigger Watch"));
    EXPECT_EQ(desk.questions().asked, QStringList{QStringLiteral("确实要删除公式夹-[梁]吗？")});
    EXPECT_EQ(first.rows(QStringLiteral("Select ID From Gone")),
              (QStringList{QString::number(simple), QString::number(cantilever),
                           QString::number(beams)}));
    EXPECT_EQ(first.rows(QStringLiteral("Select Name From Formula")),
              QStringList{QStringLiteral("稳定")});
    EXPECT_EQ(first.rows(QStringLiteral("Select NodeID,NodeType From Property")),
              QStringList{QStringLiteral("4711|1")});
    EXPECT_EQ(desk.tree().selectedKey(), QStringLiteral("DBNode1"));
    EXPECT_TRUE(desk.messages().isEmpty());
}

TEST_F(FolderCommand, DecliningADeletionChangesNothing) {
    desk.clickNode(QStringLiteral("梁"));
    const QByteArray before = fileContent(first.path());
    desk.clickEditButton(QStringLiteral("删除"));
    desk.clickFormula(QStringLiteral("剪切"));
    desk.clickEditButton(QStringLiteral("删除"));
    EXPECT_EQ(desk.questions().asked.size(), 2);
    EXPECT_EQ(fileContent(first.path()), before);
}

TEST_F(FolderCommand, MovingExchangesNeighboursAndKeepsWhatIsOpen) {
    first.addProperty(1, QStringLiteral("形"), 0, columns, NodeTypeFolder);
    desk.clickNode(QStringLiteral("梁"));
    desk.clickEditButton(QStringLiteral("下移"));
    EXPECT_EQ(first.rows(QStringLiteral("Select Name From Tree Where PID = 0 Order By OrderID")),
              (QStringList{QStringLiteral("柱"), QStringLiteral("梁"), QStringLiteral("板")}));
    EXPECT_EQ(desk.tree().selectedKey(), folder(beams));
    EXPECT_EQ(desk.listTexts().size(), 3);
    EXPECT_TRUE(desk.tree().isExpanded(Desk::find(desk.tree(), QStringLiteral("梁"))));
    EXPECT_TRUE(showsWhatIsStored(desk)) << "with the picture of a property";
    desk.openMenu(desk.tree(), QStringLiteral("悬臂"));
    desk.choose("mnuPopMoveUp");
    EXPECT_EQ(desk.treeTexts().mid(2, 3),
              (QStringList{QStringLiteral("  梁"), QStringLiteral("    悬臂"),
                           QStringLiteral("    简支")}));
}

TEST_F(FolderCommand, ASingleFolderIsOfferedTheWayDownAndStays) {
    desk.clickNode(QStringLiteral("管"));
    const QByteArray before = fileContent(second.path());
    EXPECT_FALSE(desk.editButton(QStringLiteral("上移")).isEnabled());
    desk.clickEditButton(QStringLiteral("下移"));
    EXPECT_EQ(fileContent(second.path()), before);
    EXPECT_TRUE(desk.messages().isEmpty());
}

TEST_F(FolderCommand, KeysActOnTheSelectedNodeAndNotInTextBoxes) {
    desk.clickNode(QStringLiteral("梁"));
    desk.clickFormula(QStringLiteral("剪切"));
    desk.tree().setFocus();
    QTest::keyClick(&desk.tree(), Qt::Key_Delete);
    EXPECT_EQ(desk.questions().asked.value(0), QStringLiteral("确实要删除公式夹-[梁]吗？"));
    QTest::keyClick(&desk.tree(), Qt::Key_F2);
    ASSERT_NE(desk.labelEditor(), nullptr);
    QTest::keyClick(desk.labelEditor(), Qt::Key_Delete);
    desk.typeLabel(QStringLiteral("大梁"));
    EXPECT_EQ(first.rows(QStringLiteral("Select Name From Tree")).first(), QStringLiteral("大梁"));
    desk.clickFormula(QStringLiteral("剪切"));
    desk.formulaBox().setFocus();
    QTest::keyClick(&desk.formulaBox(), Qt::Key_Delete);
    QTest::keyClick(&desk.formulaBox(), Qt::Key_F2);
    EXPECT_EQ(desk.questions().asked.size(), 1);
    EXPECT_EQ(desk.labelEditor(), nullptr);
}

}  // namespace
}  // namespace varo::test
