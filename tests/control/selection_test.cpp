#include "platform/ui/picture_box.h"
#include "support/desk.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QTest>

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace varo::test {
namespace {

QByteArray imageBytes(QSize size, const char* format) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, format);
    return bytes;
}

/// Two libraries: the first with folders, pictures and properties, the second with a folder of its
/// own.
class Selection : public testing::Test {
  protected:
    Selection() {
        beams = first.addFolder(0, QStringLiteral("梁"));
        empty = first.addFolder(beams, QStringLiteral("空"));
        bending = first.addFormula(beams, QStringLiteral("弯曲"), QStringLiteral("M/W"),
                                   QStringLiteral("弯曲正应力"));
        shear = first.addFormula(beams, QStringLiteral("剪切"), QStringLiteral("3*Q/(2*b*h)"));
        blank = first.addFormula(beams, QStringLiteral("空白"), QString(), QStringLiteral("待定"));
        first.addPicture(bending, imageBytes({60, 40}, "bmp"));
        first.addValue(QStringLiteral("M"), bending, QStringLiteral("1200"));
        first.addValue(QStringLiteral("W"), bending, QStringLiteral("100"));
        first.addProperty(1, QStringLiteral("形"), 0, beams, NodeTypeFolder);
        first.addProperty(1, QStringLiteral("形"), 0, 4711, NodeTypeFolder);
        first.addProperty(1, QStringLiteral("形"), 0, shear, NodeTypeFormula);
        second.addFolder(0, QStringLiteral("管"));
        flow = second.addFormula(1, QStringLiteral("流量"), QStringLiteral("v*A"));
    }

    TestLibrary first;
    TestLibrary second;
    TestConfiguration configuration{&first, &second};
    qint32 beams = 0;
    qint32 empty = 0;
    qint32 bending = 0;
    qint32 shear = 0;
    qint32 blank = 0;
    qint32 flow = 0;
};

TEST_F(Selection, ClickingAFolderListsItsFormulasAndShowsAndCalculatesTheFirst) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_EQ(desk.listTexts(), (QStringList{QStringLiteral("弯曲"), QStringLiteral("剪切"),
                                             QStringLiteral("空白")}));
    EXPECT_EQ(desk.list().selectedKey(), QStringLiteral("LvFormulaKey%1").arg(bending));
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("M/W"));
    EXPECT_EQ(desk.gridTexts(), (QStringList{QStringLiteral("M=1200"), QStringLiteral("W=100")}));
    EXPECT_EQ(desk.result(), QStringLiteral("12.00"));
    EXPECT_TRUE(desk.isShown("imgDesc"));
    for (const char* name :
         {"txtFormula", "MSFEditVarList", "cmdCalCulate", "CmdAddResult", "cmdClearResult",
          "UpDownPrecision", "optDesc0", "TabStripSymbol", "cmdSaveResult", "cmdCopy", "cmdSend"}) {
        EXPECT_TRUE(desk.isEnabled(name)) << name;
    }
    EXPECT_FALSE(desk.isEnabled("tbSymbol0")) << "only while the formula box has the focus";
}

TEST_F(Selection, AFolderWithoutFormulasClearsThePanel) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    desk.tree().expand(Desk::find(desk.tree(), QStringLiteral("梁")));
    desk.clickNode(QStringLiteral("空"));
    EXPECT_TRUE(desk.listTexts().isEmpty());
    EXPECT_TRUE(desk.formulaBox().text().isEmpty());
    EXPECT_TRUE(desk.result().isEmpty());
    EXPECT_EQ(desk.grid().Rows(), 1);
    EXPECT_TRUE(desk.isShown("lblDesc"));
    EXPECT_FALSE(desk.isShown("imgDesc"));
    EXPECT_TRUE(desk.isEnabled("tvFolder"));
    EXPECT_TRUE(desk.isEnabled("lvFormula"));
    EXPECT_FALSE(desk.isEnabled("txtFormula"));
    EXPECT_FALSE(desk.isEnabled("cmdCopy"));
}

TEST_F(Selection, TheKeyboardSelectsAsTheMouseDoes) {
    Desk desk(configuration.folder());
    desk.tree().setFocus();
    QTest::keyClick(&desk.tree(), Qt::Key_Down);
    EXPECT_EQ(desk.tree().selectedKey(), QStringLiteral("FormulaNode%1->DBNode1").arg(beams));
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("M/W"));
    desk.list().setFocus();
    QTest::keyClick(&desk.list(), Qt::Key_Down);
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("3*Q/(2*b*h)"));
}

TEST_F(Selection, OpeningANodeSelectsItWithoutListing) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("管"));
    ASSERT_EQ(desk.listTexts(), QStringList{QStringLiteral("流量")});
    const QModelIndex node = Desk::find(desk.tree(), QStringLiteral("梁"));
    const QRect rect = desk.tree().visualRect(node);
    QTest::mouseClick(desk.tree().viewport(), Qt::LeftButton, {},
                      {rect.left() - 7, rect.center().y()});
    settle();
    EXPECT_TRUE(desk.tree().isExpanded(node));
    EXPECT_EQ(desk.tree().selectedKey(), QStringLiteral("FormulaNode%1->DBNode1").arg(beams));
    EXPECT_EQ(desk.listTexts(), QStringList{QStringLiteral("流量")});
}

TEST_F(Selection, TheConnectionFollowsTheLibraryOfTheSelectedNode) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    desk.clickNode(QStringLiteral("管"));
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("v*A"));
    desk.typeValue(QStringLiteral("v"), QStringLiteral("7"));
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("M/W"));
    desk.clickNode(QStringLiteral("管"));
    EXPECT_EQ(desk.value(QStringLiteral("v")), QStringLiteral("7"));
}

TEST_F(Selection, ALibraryThatGoesAwayIsTold) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    ASSERT_TRUE(QFile::remove(second.path()));
    desk.clickNode(QStringLiteral("管"));
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("无法打开用户指定的数据库！")});
    EXPECT_TRUE(desk.listTexts().isEmpty()) << "nothing that could be edited without its library";
    EXPECT_FALSE(desk.isEnabled("txtFormula"));
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_EQ(desk.result(), QStringLiteral("12.00"));
}

TEST_F(Selection, ALibraryThatCannotBeListedLeavesNothingToEdit) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    second.connection().execute(QStringLiteral("drop table Formula"));
    desk.clickNode(QStringLiteral("管"));
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("无法读取节点“管”下所有的公式！")});
    EXPECT_TRUE(desk.formulaBox().text().isEmpty());
    EXPECT_FALSE(desk.isEnabled("txtFormula"));
    EXPECT_TRUE(desk.listTexts().isEmpty());
}

TEST_F(Selection, WhatIsSelectedIsWhatIsShown) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    const auto centre = [&](const QString& text) {
        const QRect rect = desk.list().visualRect(Desk::find(desk.list(), text));
        return QPoint(rect.left() + 8, rect.center().y());
    };
    const QString shown = desk.list().selectedKey();
    QWidget* viewport = desk.list().viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, centre(QStringLiteral("弯曲")));
    QTest::mouseMove(viewport, centre(QStringLiteral("剪切")));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, centre(QStringLiteral("剪切")));
    EXPECT_EQ(desk.list().selectedKey(), shown) << "dragged over another item";
    QTest::mouseClick(viewport, Qt::RightButton, {}, centre(QStringLiteral("空白")));
    EXPECT_EQ(desk.list().selectedKey(), QStringLiteral("LvFormulaKey%1").arg(blank))
        << "the menu speaks of what is under the pointer";
    EXPECT_TRUE(desk.formulaBox().text().isEmpty());
    desk.menu().close();
    QTest::keyClick(&desk.list(), Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(desk.formulaBox().text().isEmpty(),
              desk.list().selectedKey() == QStringLiteral("LvFormulaKey%1").arg(blank));
}

TEST_F(Selection, AnIdentifierThatIsThereTwiceIsListedOnce) {
    Desk desk(configuration.folder());  // the damage is done while the library is open
    desk.clickNode(QStringLiteral("空"));
    first.connection().execute(QStringLiteral("create table Copy as select * from Formula"));
    first.connection().execute(QStringLiteral("drop table Formula"));
    first.connection().execute(QStringLiteral("alter table Copy rename to Formula"));
    first.connection().execute(QStringLiteral("insert into Formula select * from Formula"));
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_EQ(desk.listTexts().size(), 3);
}

TEST_F(Selection, NamesWithLineBreaksTakeOneLine) {
    first.addFolder(0, QStringLiteral("上\n下"));
    first.addFormula(beams, QStringLiteral("一\n二"), QStringLiteral("1"));
    Desk desk(configuration.folder());
    EXPECT_TRUE(desk.treeTexts().contains(QStringLiteral("  上 下")));
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_EQ(desk.listTexts().last(), QStringLiteral("一 二"));
}

TEST_F(Selection, ClickingEmptySpaceInTheListClearsAndDeselects) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    desk.clickEmptySpace(desk.list());
    EXPECT_TRUE(desk.list().selectedKey().isEmpty());
    EXPECT_TRUE(desk.formulaBox().text().isEmpty());
    EXPECT_FALSE(desk.isEnabled("txtFormula"));
    desk.clickFormula(QStringLiteral("剪切"));
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("3*Q/(2*b*h)"));
    EXPECT_TRUE(desk.isEnabled("txtFormula"));
    desk.clickEmptySpace(desk.list(), Qt::RightButton);
    EXPECT_FALSE(desk.isEnabled("txtFormula"));
}

TEST_F(Selection, AFormulaWithoutExpressionShowsNoResultOfTheOneBefore) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    desk.clickFormula(QStringLiteral("空白"));
    EXPECT_TRUE(desk.formulaBox().text().isEmpty());
    EXPECT_TRUE(desk.result().isEmpty());
    EXPECT_FALSE(desk.isEnabled("cmdCopy"));
    EXPECT_TRUE(desk.isEnabled("txtFormula"));
    EXPECT_EQ(desk.child<QPlainTextEdit>("txtDesc").toPlainText(), QStringLiteral("待定"));
}

TEST_F(Selection, TheHostSelectsByKeyAndUnknownKeysDoNothing) {
    Desk desk(configuration.folder());
    desk.control().ClickTreeNode(QStringLiteral("FormulaNode%1->DBNode1").arg(beams));
    desk.control().SelFormula(QStringLiteral("LvFormulaKey%1").arg(shear));
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("3*Q/(2*b*h)"));
    for (const QString& key :
         {QStringLiteral("FormulaNode99->DBNode1"), QStringLiteral("DBNode9"), QString(),
          QStringLiteral("LvFormulaKey1"), QStringLiteral("'; drop table Tree; --")}) {
        desk.control().ClickTreeNode(key);
    }
    for (const QString& key :
         {QStringLiteral("LvFormulaKey99"), QString(), QStringLiteral("DBNode1")}) {
        desk.control().SelFormula(key);
    }
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("3*Q/(2*b*h)"));
    EXPECT_EQ(desk.tree().selectedKey(), QStringLiteral("FormulaNode%1->DBNode1").arg(beams));
    EXPECT_TRUE(desk.messages().isEmpty());
}

TEST_F(Selection, TheDescriptionOptionsSwitchBetweenTextAndPicture) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    QTest::mouseClick(&desk.child<QRadioButton>("optDesc0"), Qt::LeftButton, {}, {8, 8});
    EXPECT_TRUE(desk.isShown("txtDesc"));
    EXPECT_FALSE(desk.isShown("imgDesc"));
    EXPECT_EQ(desk.child<QPlainTextEdit>("txtDesc").toPlainText(), QStringLiteral("弯曲正应力"));
    QTest::mouseClick(&desk.child<QRadioButton>("optDesc1"), Qt::LeftButton, {}, {8, 8});
    EXPECT_TRUE(desk.isShown("imgDesc"));
    desk.clickFormula(QStringLiteral("剪切"));
    EXPECT_FALSE(desk.isShown("imgDesc"));
    EXPECT_TRUE(desk.isShown("lblDesc"));
    EXPECT_EQ(desk.child<QLabel>("lblDesc").text(), QStringLiteral("无图片"));
    QTest::mouseClick(&desk.child<QRadioButton>("optDesc1"), Qt::LeftButton, {}, {8, 8});
    EXPECT_TRUE(desk.isShown("lblDesc"));
}

TEST_F(Selection, APictureThatCannotBeShownIsSaidToBeThere) {
    const QByteArray jpg = imageBytes({300, 200}, "jpg");
    first.addPicture(shear, pictureBytes(40000));
    first.addPicture(blank, jpg.first(jpg.size() / 2));
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_EQ(desk.listTexts().size(), 3);
    for (const QString& name : {QStringLiteral("剪切"), QStringLiteral("空白")}) {
        desk.clickFormula(name);
        QTest::mouseClick(&desk.child<QRadioButton>("optDesc0"), Qt::LeftButton, {}, {8, 8});
        QTest::mouseClick(&desk.child<QRadioButton>("optDesc1"), Qt::LeftButton, {}, {8, 8});
        EXPECT_TRUE(desk.isShown("imgDesc")) << name.toStdString();
        EXPECT_FALSE(desk.isShown("lblDesc")) << name.toStdString();
        const auto& box = desk.child<ui::PictureBox>("imgDesc");
        EXPECT_TRUE(box.picture().isNull());
        EXPECT_EQ(box.text(), QStringLiteral("无法显示图片"));
    }
    EXPECT_TRUE(desk.messages().isEmpty());
}

TEST_F(Selection, AWorkFolderThatTakesNoFilesIsToldOnceAndTheFormulasAreListed) {
    first.addPicture(shear, imageBytes({60, 40}, "bmp"));
    Desk desk;
    desk.control().setWorkFolder(first.folder() + QStringLiteral("missing"));
    desk.run(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_EQ(desk.messages().size(), 1);
    EXPECT_EQ(desk.listTexts().size(), 3);
    EXPECT_EQ(desk.result(), QStringLiteral("12.00"));
    EXPECT_TRUE(desk.isShown("lblDesc"));
}

TEST_F(Selection, TheKeyboardActsOnTheStrongerOfTheTwoSelections) {
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    desk.clickFormula(QStringLiteral("弯曲"));
    /// How far the colour behind the selected label is from that of empty space.
    const auto strength = [](ui::NodeView& view) {
        const QImage shown = view.viewport()->grab().toImage();
        const QRect row = view.visualRect(view.selectedIndex());
        const int behind =
            qGray(shown.pixel(std::min(row.right(), shown.width()) - 4, row.top() + 2));
        return std::abs(qGray(shown.pixel(4, shown.height() - 4)) - behind);
    };
    for (ui::NodeView* focused : {&desk.tree(), &desk.list()}) {
        ui::NodeView* other = focused == &desk.tree() ? &desk.list() : &desk.tree();
        focused->setFocus();
        settle();
        EXPECT_GT(strength(*other), 20);
        EXPECT_GT(strength(*focused), strength(*other) + 40);
    }
}

TEST_F(Selection, ItemsThatCarryPropertiesLookDifferent) {
    Desk desk(configuration.folder());
    const auto picture = [](const ui::NodeView& view, const QString& text) {
        return Desk::find(view, text).data(Qt::DecorationRole).value<QIcon>().pixmap(16).toImage();
    };
    EXPECT_NE(picture(desk.tree(), QStringLiteral("梁")),
              picture(desk.tree(), QStringLiteral("管")));
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_NE(picture(desk.list(), QStringLiteral("弯曲")),
              picture(desk.list(), QStringLiteral("剪切")));
    EXPECT_EQ(picture(desk.list(), QStringLiteral("弯曲")),
              picture(desk.list(), QStringLiteral("空白")));
}

}  // namespace
}  // namespace varo::test
