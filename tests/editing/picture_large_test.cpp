#include "editing/picture_desk.h"

#include <QDialog>

namespace varo::test {
namespace {

class PictureLarge : public PictureDesk {
  protected:
    /// The window that a double click on the picture opens; null when it opens none.
    QDialog* openLarge() {
        QTest::mouseDClick(&picture(), Qt::LeftButton);
        settle();
        return desk->control().findChild<QDialog*>(QStringLiteral("frmImage"));
    }
};

TEST_F(PictureLarge, ADoubleClickShowsThePictureInAWindowAsLargeAsTheControl) {
    QDialog* window = openLarge();
    ASSERT_NE(window, nullptr);
    auto* box = window->findChild<ui::PictureBox*>(QStringLiteral("imgFormula"));
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->isModal());
    EXPECT_EQ(window->size(), desk->control().size());
    EXPECT_EQ(box->geometry(), window->rect());
    EXPECT_EQ(box->grab().toImage().pixelColor(box->rect().center()), QColor(Qt::red));
    window->resize(500, 300);
    settle();
    EXPECT_EQ(box->geometry(), QRect(0, 0, 500, 300));

    QTest::mouseRelease(box, Qt::LeftButton);
    EXPECT_FALSE(box->picture().isNull()) << "the end of the double click";
    QTest::mouseClick(box, Qt::LeftButton);
    EXPECT_TRUE(box->picture().isNull());
    QTest::keyClick(window, Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(desk->control().findChild<QDialog*>(QStringLiteral("frmImage")), nullptr);
    EXPECT_EQ(shownColor(), QColor(Qt::red));
}

TEST_F(PictureLarge, EnterOnThePictureShowsIt) {
    picture().setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_NE(desk->control().findChild<QDialog*>(QStringLiteral("frmImage")), nullptr);
}

TEST_F(PictureLarge, WithoutItsFileADoubleClickDoesNothing) {
    QTest::mouseDClick(&picture(), Qt::RightButton);
    menu().close();
    ASSERT_TRUE(QFile::remove(pictureFile(first)));
    EXPECT_EQ(openLarge(), nullptr);
    desk->clickFormula(QStringLiteral("二"));
    QTest::mouseDClick(&label(), Qt::LeftButton);
    EXPECT_EQ(openLarge(), nullptr);
    EXPECT_TRUE(desk->messages().isEmpty());
}

TEST_F(PictureLarge, TheControlMayGoWhileThePictureIsShownLarge) {
    ASSERT_NE(openLarge(), nullptr);
    desk.reset();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

}  // namespace
}  // namespace varo::test
