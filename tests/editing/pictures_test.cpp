#include "editing/picture_desk.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>

namespace varo::test {
namespace {

constexpr int kBmp = 0;
constexpr int kWmf = 1;
constexpr int kJpg = 2;

class Pictures : public PictureDesk {
  protected:
    void pressMenuKey() {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QApplication::sendEvent(QApplication::focusWidget(), &event);
        settle();
    }
    QDialog* window() { return desk->control().findChild<QDialog*>(u"frmImage"_s); }
    QDialog* openLarge(QWidget& on, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseDClick(&on, button);
        settle();
        return window();
    }
};

TEST_F(Pictures, TheMenuOffersWhatSuitsThePlaceAndTheClipboard) {
    EXPECT_EQ(openMenu(picture()), u"替换 - 复制 (粘贴) - 删除"_s);
    desk->control().SelFormula(u"LvFormulaKey2"_s);
    EXPECT_EQ(menuEntries(), QString()) << "the menu closes with what it speaks of";
    EXPECT_EQ(openMenu(label()), u"添加 (-) (复制) (粘贴) (-) (删除)"_s);
    menu().close();
    EXPECT_TRUE(QFile(workFile(u"backupPic.def"_s)).open(QIODevice::WriteOnly));
    EXPECT_EQ(openMenu(label()), u"添加 - (复制) 粘贴 (-) (删除)"_s);
    menu().close();
    desk->clickEmptySpace(desk->list());
    EXPECT_EQ(openMenu(label()), u"(添加) (-) (复制) (粘贴) (-) (删除)"_s);
    menu().close();
    desk->clickFormula(u"弯曲"_s);
    EXPECT_EQ(openMenu(picture()), u"替换 - 复制 粘贴 - 删除"_s);
    menu().close();
    desk->child("optDesc1").setEnabled(false);
    EXPECT_EQ(openMenu(picture()), QString());
    select(u"板"_s);
    EXPECT_EQ(openMenu(label()), QString());
}

TEST_F(Pictures, TheKeyboardOpensTheMenuOnTheDescriptionArea) {
    desk->child("optDesc1").setFocus();
    desk->pressKey(Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), &picture());
    EXPECT_EQ(picture().grab().toImage().pixelColor(0, 0),
              picture().palette().color(QPalette::Highlight));
    pressMenuKey();
    EXPECT_EQ(menuEntries(), u"替换 - 复制 (粘贴) - 删除"_s);
    QTest::keyClick(&menu(), Qt::Key_Up);
    QTest::keyClick(&menu(), Qt::Key_Return);
    EXPECT_EQ(stored(bending), storedAs(0, {}));
    EXPECT_EQ(QApplication::focusWidget(), &label());
    pressMenuKey();
    EXPECT_TRUE(menuEntries().startsWith(u"添加"_s));
}

TEST_F(Pictures, AChosenFileIsStoredAndShown) {
    desk->clickFormula(u"剪切"_s);
    chooseFile(label(), u"添加"_s, first.addFile(u"图.JPG"_s, blue), kJpg);
    EXPECT_EQ(desk->questions().fileQuestion.title, u"选择图片"_s);
    EXPECT_EQ(desk->questions().fileQuestion.filters.join(u' '), u"(*.bmp) (*.wmf) (*.jpg)"_s);
    EXPECT_EQ(stored(shear), storedAs(2, blue));
    EXPECT_EQ(fileContent(pictureFile(shear)), blue);
    EXPECT_EQ(shownColor(), QColor(Qt::blue));
    desk->clickFormula(u"弯曲"_s);
    EXPECT_EQ(shownColor(), QColor(Qt::red));
    desk->clickFormula(u"剪切"_s);
    EXPECT_EQ(shownColor(), QColor(Qt::blue));
    const QByteArray drawing = WmfBuilder()
                                   .brush(0, 128, 0)
                                   .add(WmfBuilder::SelectObject, {0})
                                   .add(WmfBuilder::Rectangle, {100, 100, 0, 0})
                                   .placed(QRect(0, 0, 100, 100), 96);
    first.addFile(u"x.wmf"_s, drawing);
    chooseFile(picture(), u"替换"_s, first.pathOf(u"x"_s), kWmf);
    EXPECT_EQ(stored(shear), storedAs(2, drawing)) << "in another format, its extension added";
    start();
    select(u"梁"_s, u"剪切"_s);
    EXPECT_EQ(shownColor(), QColor(0, 128, 0)) << "it comes from the library";
    EXPECT_EQ(told(), QString());
}

TEST_F(Pictures, WhatIsNoFileOrPictureReplacesNone) {
    choose(picture(), u"替换"_s);
    EXPECT_FALSE(desk->questions().fileQuestion.title.isEmpty()) << "the user cancels";
    const QString own = pictureFile(bending);
    first.refuse("Update", "Formula");
    chooseFile(picture(), u"替换"_s, work.filePath(u"./%1TempPic.bmp"_s.arg(bending)), kBmp);
    first.allow();
    EXPECT_EQ(told(), QString()) << "the formula's own file, which is not stored again";
    chooseFile(picture(), u"替换"_s, newPicture, kWmf);
    EXPECT_EQ(told(), u"文件new.bmp.wmf不存在，\n不能添加到当前公式！"_s);
    for (const QByteArray& file : {QByteArray(), QByteArray("text"), blue.chopped(20)}) {
        chooseFile(picture(), u"替换"_s, first.addFile(u"x.jpg"_s, file), kJpg);
        EXPECT_EQ(told(), kNotStored);
    }
    EXPECT_EQ(stored(bending), storedAs(2, red));
    EXPECT_EQ(fileContent(own), red);
    EXPECT_EQ(shownColor(), QColor(Qt::red));
    EXPECT_EQ(workFiles().size(), 1) << "no copies are left behind";
}

TEST_F(Pictures, ACopiedPictureCanBePastedAlsoAfterARestart) {
    choose(picture(), u"复制"_s);
    start();
    select(u"梁"_s, u"剪切"_s);
    choose(label(), u"粘贴"_s);
    EXPECT_EQ(stored(shear), storedAs(2, red));
    EXPECT_EQ(shownColor(), QColor(Qt::red));
    choose(picture(), u"删除"_s);
    openMenu(label());
    ASSERT_TRUE(QFile::remove(workFile(u"backupPic.def"_s)));
    desk->child<QAction>("mnuPopPastePic").trigger();
    EXPECT_EQ(told(), kNotStored);
    EXPECT_EQ(stored(shear), storedAs(0, {}));
}

TEST_F(Pictures, APictureThatCannotBeShownCanBeCopiedAndDeleted) {
    first.addPicture(bending, "text");
    restart();
    EXPECT_EQ(picture().text(), u"无法显示图片"_s);
    choose(picture(), u"复制"_s);
    EXPECT_EQ(fileContent(workFile(u"backupPic.def"_s)), "text");
    choose(picture(), u"删除"_s);
    EXPECT_EQ(stored(bending), storedAs(0, {}));
    EXPECT_EQ(workFiles(), QStringList{u"backupPic.def"_s});
    EXPECT_TRUE(desk->isShown("lblDesc"));
    EXPECT_FALSE(desk->isShown("imgDesc"));
    EXPECT_EQ(told(), QString());
}

TEST_F(Pictures, ADoubleClickOrEnterShowsThePictureInAWindowAsLargeAsTheControl) {
    QDialog* large = openLarge(picture());
    ASSERT_NE(large, nullptr);
    auto* box = large->findChild<ui::PictureBox*>(u"imgFormula"_s);
    EXPECT_TRUE(large->isVisible());
    EXPECT_TRUE(large->isModal());
    EXPECT_EQ(large->size(), desk->control().size());
    EXPECT_EQ(box->grab().toImage().pixelColor(box->rect().center()), QColor(Qt::red));
    large->resize(500, 300);
    settle();
    EXPECT_EQ(box->geometry(), QRect(0, 0, 500, 300));
    QTest::mouseRelease(box, Qt::LeftButton);
    EXPECT_FALSE(box->picture().isNull()) << "the end of the double click";
    QTest::mouseClick(box, Qt::LeftButton);
    EXPECT_TRUE(box->picture().isNull());
    QTest::keyClick(large, Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(openLarge(picture(), Qt::RightButton), nullptr);
    menu().close();
    QTest::keyClick(&picture(), Qt::Key_Return);
    EXPECT_NE(window(), nullptr);
    start();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "the control may go meanwhile";
    select(u"梁"_s, u"弯曲"_s);
    ASSERT_TRUE(QFile::remove(pictureFile(bending)));
    EXPECT_EQ(openLarge(picture()), nullptr);
    desk->clickFormula(u"剪切"_s);
    EXPECT_EQ(openLarge(label()), nullptr);
    EXPECT_EQ(told(), QString());
}

}  // namespace
}  // namespace varo::test
