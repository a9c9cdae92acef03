#include "editing/picture_desk.h"
#include "editing/picture_files.h"
#include "store/picture_transfer.h"

#include <QContextMenuEvent>
#include <QRadioButton>

namespace varo::test {
namespace {

const QString Add = QStringLiteral("添加");
const QString Change = QStringLiteral("替换");
const QString Copy = QStringLiteral("复制");
const QString Paste = QStringLiteral("粘贴");
const QString Delete = QStringLiteral("删除");

const QString StoringFailed = QStringLiteral("处理图形文件失败！");

constexpr int Bmp = 0;
constexpr int Wmf = 1;
constexpr int Jpg = 2;

class PictureCommands : public PictureDesk {
  protected:
    /// Presses the menu key on what has the focus.
    void pressMenuKey() {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QApplication::sendEvent(QApplication::focusWidget(), &event);
        settle();
    }
};

TEST_F(PictureCommands, TheMenuOffersWhatSuitsThePlaceAndTheClipboard) {
    EXPECT_EQ(openMenu(picture()), (QStringList{Change, "-", Copy, "(粘贴)", "-", Delete}));
    menu().close();
    desk->clickFormula(QStringLiteral("二"));
    EXPECT_EQ(openMenu(label()), (QStringList{Add, "(-)", "(复制)", "(粘贴)", "(-)", "(删除)"}));
    menu().close();

    QFile(workFile(QStringLiteral("backupPic.def"))).open(QIODevice::WriteOnly);
    EXPECT_EQ(openMenu(label()), (QStringList{Add, "-", "(复制)", Paste, "(-)", "(删除)"}));
    menu().close();
    desk->clickFormula(QStringLiteral("一"));
    EXPECT_EQ(openMenu(picture()), (QStringList{Change, "-", Copy, Paste, "-", Delete}));
}

TEST_F(PictureCommands, TheKeyboardOpensTheMenuOnTheDescriptionArea) {
    desk->child<QWidget>("optDesc1").setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), &picture());
    EXPECT_EQ(picture().grab().toImage().pixelColor(0, 0),
              picture().palette().color(QPalette::Highlight));
    pressMenuKey();
    EXPECT_EQ(menuEntries(), (QStringList{Change, "-", Copy, "(粘贴)", "-", Delete}));
    QTest::keyClick(&menu(), Qt::Key_Up);
    QTest::keyClick(&menu(), Qt::Key_Return);
    EXPECT_EQ(stored(first), storedAs(0, {}));
    EXPECT_EQ(QApplication::focusWidget(), &label());
    pressMenuKey();
    EXPECT_EQ(menuEntries().first(), Add);
}

TEST_F(PictureCommands, AnOpenMenuClosesWithWhatItSpeaksOf) {
    for (const bool listsAnew : {false, true}) {
        desk->clickFormula(QStringLiteral("一"));
        ASSERT_FALSE(openMenu(picture()).isEmpty());
        if (listsAnew) {
            desk->control().ClickTreeNode(QStringLiteral("DBNode1"));
        } else {
            desk->control().SelFormula(QStringLiteral("LvFormulaKey%1").arg(second));
        }
        EXPECT_FALSE(menu().isVisible());
    }
}

TEST_F(PictureCommands, TheMenuStaysClosedWithoutFormulas) {
    desk->child<QRadioButton>("optDesc1").setEnabled(false);
    EXPECT_TRUE(openMenu(picture()).isEmpty());
    QTest::mouseClick(&picture(), Qt::LeftButton);
    library.addFolder(0, QStringLiteral("空"));
    desk->control().ClickTreeNode(QStringLiteral("DBNode1"));
    start();
    desk->clickNode(QStringLiteral("空"));
    EXPECT_TRUE(openMenu(label()).isEmpty());
}

TEST_F(PictureCommands, AnAddedPictureIsStoredAndShown) {
    desk->clickFormula(QStringLiteral("二"));
    const QString file = addFile(QStringLiteral("图.JPG"), blue);
    chooseFile(label(), Add, file, Jpg);
    EXPECT_EQ(desk->questions().fileTitle, QStringLiteral("选择图片"));
    EXPECT_EQ(desk->questions().fileFilters, (QStringList{"(*.bmp)", "(*.wmf)", "(*.jpg)"}));
    EXPECT_EQ(stored(second), storedAs(2, blue));
    EXPECT_EQ(fileContent(pictureFile(second)), blue);
    EXPECT_EQ(fileContent(file), blue);
    EXPECT_EQ(shownColor(), QColor(Qt::blue));
    EXPECT_TRUE(desk->messages().isEmpty());
    desk->clickFormula(QStringLiteral("一"));
    EXPECT_EQ(shownColor(), QColor(Qt::red));
    desk->clickFormula(QStringLiteral("二"));
    EXPECT_EQ(shownColor(), QColor(Qt::blue));
    start();
    desk->clickFormula(QStringLiteral("二"));
    EXPECT_EQ(shownColor(), QColor(Qt::blue)) << "it comes from the library";
}

TEST_F(PictureCommands, AReplacedPictureMayHaveAnotherFormat) {
    const QByteArray drawing = WmfBuilder()
                                   .brush(0, 128, 0)
                                   .add(WmfBuilder::SelectObject, {0})
                                   .add(WmfBuilder::Rectangle, {100, 100, 0, 0})
                                   .placed(QRect(0, 0, 100, 100), 96);
    chooseFile(picture(), Change, addFile(QStringLiteral("x.wmf"), drawing), Wmf);
    EXPECT_EQ(stored(first), storedAs(2, drawing));
    EXPECT_EQ(shownColor(), QColor(0, 128, 0));
    EXPECT_EQ(workFiles(), QStringList{QStringLiteral("%1TempPic.bmp").arg(first)});
}

TEST_F(PictureCommands, ANameWithoutTheFiltersExtensionGetsIt) {
    addFile(QStringLiteral("x.bmp"), blue);
    chooseFile(picture(), Change, library.pathOf(QStringLiteral("x")), Bmp);
    EXPECT_EQ(stored(first), storedAs(2, blue));
    chooseFile(picture(), Change, library.pathOf(QStringLiteral("x.bmp")), Wmf);
    EXPECT_EQ(desk->messages(),
              QStringList{QStringLiteral("文件x.bmp.wmf不存在，\n不能添加到当前公式！")});
    EXPECT_EQ(stored(first), storedAs(2, blue));
}

TEST_F(PictureCommands, ACancelledChoiceChangesNothing) {
    choose(picture(), Change);
    EXPECT_FALSE(desk->questions().fileTitle.isEmpty());
    EXPECT_TRUE(desk->messages().isEmpty());
    EXPECT_EQ(stored(first), storedAs(2, red));
    EXPECT_EQ(shownColor(), QColor(Qt::red));
}

TEST_F(PictureCommands, TheFormulasOwnFileIsLeftAlone) {
    const QString own = pictureFile(first);
    chooseFile(picture(), Change, own, Bmp);
    chooseFile(picture(), Change,
               work.path() + QStringLiteral("/../") + QDir(work.path()).dirName() + u'/' +
                   QFileInfo(own).fileName(),
               Bmp);
    EXPECT_EQ(fileContent(own), red);
    EXPECT_TRUE(desk->messages().isEmpty());
}

TEST_F(PictureCommands, WhatIsNoPictureReplacesNone) {
    QByteArray bomb = imageBytes({1, 1}, Qt::blue, "bmp");
    qToLittleEndian(qint32{20000}, bomb.data() + 18);
    qToLittleEndian(qint32{20000}, bomb.data() + 22);
    const QByteArray wmf =
        WmfBuilder().add(WmfBuilder::Rectangle, {1, 1, 0, 0}).placed(QRect(0, 0, 9, 9), 96);
    const QList<QByteArray> files{QByteArray(), "text", bomb, blue.chopped(20), wmf.chopped(4)};
    for (const QByteArray& file : files) {
        chooseFile(picture(), Change, addFile(QStringLiteral("x.jpg"), file), Jpg);
        EXPECT_EQ(stored(first), storedAs(2, red));
        EXPECT_EQ(fileContent(pictureFile(first)), red);
        EXPECT_EQ(shownColor(), QColor(Qt::red));
    }
    EXPECT_EQ(desk->messages(), QStringList(files.size(), StoringFailed));
    desk->clickFormula(QStringLiteral("二"));
    chooseFile(label(), Add, library.pathOf(QStringLiteral("x.jpg")), Jpg);
    EXPECT_EQ(stored(second), storedAs(0, {}));
    EXPECT_TRUE(desk->isShown("lblDesc"));
    EXPECT_EQ(workFiles().size(), 1) << "no copies are left behind";
}

TEST_F(PictureCommands, AFileThatNoLibraryTakesIsNotEvenCopied) {
    QFile huge(addFile(QStringLiteral("x.bmp"), red));
    ASSERT_TRUE(huge.resize((kPictureChunkLimit + 1) * kPictureChunk));
    PictureCopy copy(workFile(QStringLiteral("copy")));
    EXPECT_FALSE(copy.take(huge.fileName()));
    EXPECT_FALSE(QFile::exists(copy.path()));
}

TEST_F(PictureCommands, LibraryAndFileTakeAPictureTogetherOrNot) {
    const QString file = addFile(QStringLiteral("x.bmp"), blue);
    {
        const data::ReadSnapshot reader(library.connection());
        chooseFile(picture(), Change, file, Bmp);
    }
    EXPECT_EQ(stored(first), storedAs(2, red));
    EXPECT_EQ(fileContent(pictureFile(first)), red) << "the library could not be written";
    ASSERT_TRUE(QFile::remove(pictureFile(first)));
    ASSERT_TRUE(QDir().mkpath(pictureFile(first) + QStringLiteral("/not empty")));
    chooseFile(picture(), Change, file, Bmp);
    EXPECT_EQ(stored(first), storedAs(2, red)) << "the file could not be written";
    EXPECT_EQ(shownColor(), QColor(Qt::red));
    EXPECT_EQ(desk->messages(), (QStringList{StoringFailed, StoringFailed}));
}

TEST_F(PictureCommands, APictureThatCannotBeShownCanBeCopiedAndDeleted) {
    library.addPicture(first, "text");
    start();
    EXPECT_EQ(openMenu(picture()), (QStringList{Change, "-", Copy, "(粘贴)", "-", Delete}));
    menu().close();
    choose(picture(), Copy);
    EXPECT_EQ(fileContent(workFile(QStringLiteral("backupPic.def"))), "text");
    choose(picture(), Delete);
    EXPECT_EQ(stored(first), storedAs(0, {}));
    EXPECT_TRUE(desk->isShown("lblDesc"));
}

TEST_F(PictureCommands, ACopiedPictureCanBePastedAlsoAfterARestart) {
    choose(picture(), Copy);
    EXPECT_EQ(fileContent(workFile(QStringLiteral("backupPic.def"))), red);
    desk->clickFormula(QStringLiteral("二"));
    choose(label(), Paste);
    EXPECT_EQ(stored(second), storedAs(2, red));
    EXPECT_EQ(shownColor(), QColor(Qt::red));
    choose(picture(), Delete);
    desk.reset();
    start();
    desk->clickFormula(QStringLiteral("二"));
    choose(label(), Paste);
    EXPECT_EQ(stored(second), storedAs(2, red));
    EXPECT_TRUE(desk->messages().isEmpty());
}

TEST_F(PictureCommands, AMissingWorkingFileIsCopiedFromTheLibraryAndAMissingCopyIsTold) {
    ASSERT_TRUE(QFile::remove(pictureFile(first)));
    choose(picture(), Copy);
    const QString copy = workFile(QStringLiteral("backupPic.def"));
    EXPECT_EQ(fileContent(copy), red);
    openMenu(picture());
    ASSERT_TRUE(QFile::remove(copy));
    desk->child<QAction>("mnuPopPastePic").trigger();
    EXPECT_EQ(desk->messages(), QStringList{StoringFailed});
    EXPECT_EQ(stored(first), storedAs(2, red));
}

TEST_F(PictureCommands, ADeletedPictureIsGone) {
    choose(picture(), Delete);
    EXPECT_EQ(stored(first), storedAs(0, {}));
    EXPECT_TRUE(workFiles().isEmpty());
    EXPECT_TRUE(desk->isShown("lblDesc"));
    EXPECT_FALSE(desk->isShown("imgDesc"));
    QTest::mouseClick(&desk->child<QRadioButton>("optDesc0"), Qt::LeftButton, {}, {8, 8});
    EXPECT_FALSE(desk->isShown("lblDesc"));
    QTest::mouseClick(&desk->child<QRadioButton>("optDesc1"), Qt::LeftButton, {}, {8, 8});
    EXPECT_TRUE(desk->isShown("lblDesc"));
    EXPECT_TRUE(desk->messages().isEmpty());
}

TEST_F(PictureCommands, WithoutASelectedFormulaNothingIsOffered) {
    choose(picture(), Copy);
    desk->clickFormula(QStringLiteral("二"));
    desk->clickEmptySpace(desk->list());
    EXPECT_EQ(openMenu(label()),
              (QStringList{"(添加)", "(-)", "(复制)", "(粘贴)", "(-)", "(删除)"}));
}

}  // namespace
}  // namespace varo::test
