#include "platform/ui/registered_message.h"
#include "support/desk.h"

#include <QHeaderView>
#include <QTest>

#include <array>
#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

/// A library whose one formula takes an area from the host and a force from the user.
class HostProtocol : public testing::Test {
  protected:
    HostProtocol() {
        formula = library.addFormula(0, u"应力"_s, u"F/A"_s);
        library.addValue(u"F"_s, formula, u"1000"_s);
        library.addValue(u"A"_s, formula, u"1"_s);
        library.setSource(u"A"_s, formula, VarSourceProperty, u"截面面积"_s);
    }

    TestLibrary library;
    TestConfiguration configuration{&library};
    qint32 formula = 0;
};

TEST_F(HostProtocol, AVariableFedByAPropertyShowsTheHostsAnswerAndAsksAgainOnSetCellInfo) {
    const auto cell = [](const Varo_CalcEx& control) {
        std::array<qint32, 6> is{9, 9, 9, 9, 9, 9};
        control.GetCellInfo(is[0], is[1], is[2], is[3], is[4], is[5]);
        return is;
    };
    Desk desk;
    EXPECT_EQ(cell(desk.control()), (std::array<qint32, 6>{}));
    desk.run(configuration.folder());
    EXPECT_EQ(desk.askedProperties, QStringList{u"截面面积"_s});
    EXPECT_EQ(desk.value(u"A"_s), u"0"_s) << "a host without an answer";
    EXPECT_EQ(desk.result(), u"除数不能为零！"_s);
    EXPECT_FALSE(desk.isEnabled("cmdCopy"));
    desk.properties[u"截面面积"_s] = u"250"_s;
    desk.control().SetCellInfo(1, 2, 3, -4, 5, 2147483647);
    EXPECT_EQ(desk.value(u"A"_s), u"250"_s);
    EXPECT_EQ(desk.result(), u"4.00"_s);
    EXPECT_EQ(cell(desk.control()), (std::array<qint32, 6>{1, 2, 3, -4, 5, 2147483647}));
    desk.clickEmptySpace(desk.list());
    desk.askedProperties.clear();
    desk.control().SetCellInfo(1, 2, 3, 4, 5, 6);
    EXPECT_TRUE(desk.askedProperties.isEmpty()) << "no formula is shown";
    EXPECT_EQ(cell(desk.control()), (std::array<qint32, 6>{1, 2, 3, 4, 5, 6}));
}

TEST_F(HostProtocol, AFileThatIsDeletedWhileItIsOpenIsToldOnceAndOpenedWhenItIsThereAgain) {
    Desk desk;
    desk.run(configuration.folder());
    const QByteArray bytes = fileContent(library.path());
    ASSERT_TRUE(QFile::remove(library.path()));
    desk.typeValue(u"F"_s, u"7"_s);
    settle();
    EXPECT_EQ(std::exchange(desk.questions().informed, {}),
              (QStringList{u"无法编辑选定变量的值！"_s,
                           u"其他程序删除、替换、截短了打开的公式库文件，或者改变了它的日志方式：\n"
                           "%1\n刚才的修改没有保存！"_s.arg(library.path())}));
    EXPECT_EQ(desk.listTexts(), QStringList());
    EXPECT_FALSE(QFile::exists(library.path()));
    library.addFile(library.fileName(), bytes);
    desk.clickItem(desk.tree(), desk.tree().model()->index(0, 0));
    EXPECT_EQ(desk.messages(), QStringList());
    EXPECT_EQ(desk.value(u"F"_s), u"1000"_s);
}

TEST_F(HostProtocol, ThePassedResultArrivesAtTheHostsWindowWithItsHandle) {
    class Receiver : public QObject {
      public:
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == ui::registerWindowMessage(u"WM_CALCMSG"_s)) {
                const auto* message = static_cast<ui::RegisteredMessage*>(event);
                words.append(message->wParam);
                texts.append(ui::windowText(message->lParam));
            }
            return false;
        }
        QList<quintptr> words;
        QStringList texts;
    } receiver;
    Desk desk;
    desk.properties[u"截面面积"_s] = u"250"_s;
    desk.run(configuration.folder());
    desk.installEventFilter(&receiver);
    desk.click(desk.child("txtResult"), Qt::RightButton);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    QTest::mouseClick(&desk.child<QPushButton>("cmdSend"), Qt::LeftButton);
    EXPECT_TRUE(receiver.texts.isEmpty()) << "posted, not sent";
    settle();
    EXPECT_EQ(receiver.texts, QStringList{u"4.00"_s});
    EXPECT_EQ(receiver.words, QList<quintptr>{0});
}

TEST_F(HostProtocol, TheSplittersMoveThePanesAndTheControlStaysLargeEnough) {
    Desk desk(configuration.folder());
    const auto drag = [&](const char* name, int by) {
        auto& bar = desk.child(name);
        const QPoint grip(1, bar.height() / 2);
        QTest::mousePress(&bar, Qt::LeftButton, {}, grip);
        QTest::mouseRelease(&bar, Qt::LeftButton, {}, grip + QPoint(by, 0));
    };
    drag("picShowTreeSepar", 60);
    EXPECT_NEAR(desk.child("picTreeContain").width(), 141 + 60, 2);
    EXPECT_EQ(desk.child("picBackGround").geometry().right(), 999);
    drag("picShowFormulaSepar", -2000);
    EXPECT_NEAR(desk.list().width(), 1800 / 15, 1);
    EXPECT_FALSE(desk.isShown("picFormulaSepar"));
    const Desk small(configuration.folder(), {300, 200});
    EXPECT_GE(small.control().width(), 7000 / 15);
    EXPECT_GE(small.control().height(), 6000 / 15);
}

TEST_F(HostProtocol, ALargeFontCutsNoTextsOfTheLowerBands) {
    Desk desk(configuration.folder(), {640, 480});
    desk.setFont(QFont(desk.font().family(), 16));
    settle();
    for (const auto* button : desk.child("picResult").findChildren<QPushButton*>()) {
        const QSize text = button->fontMetrics().size(Qt::TextShowMnemonic, button->text());
        EXPECT_GT(button->width(), text.width()) << button->text().toStdString();
    }
    EXPECT_GE(desk.grid().horizontalHeader()->sectionSize(0),
              desk.grid().fontMetrics().horizontalAdvance(desk.grid().GetCellText(0, 0)));
    EXPECT_GE(desk.grid().rowHeight(0), desk.grid().fontMetrics().height());
    EXPECT_GE(desk.formulaBox().height(), desk.formulaBox().fontMetrics().height());
    EXPECT_EQ(desk.formulaBox().font().pointSize(), 16);
}

}  // namespace
}  // namespace varo::test
