#include "platform/ui/registered_message.h"
#include "support/desk.h"

#include <QAction>
#include <QHeaderView>
#include <QMouseEvent>
#include <QTest>
#include <QToolBar>

#include <array>
#include <gtest/gtest.h>

namespace varo::test {
namespace {

/// A library whose one formula takes an area from the host and a force from the user.
class HostProtocol : public testing::Test {
  protected:
    HostProtocol() {
        formula = library.addFormula(0, QStringLiteral("应力"), QStringLiteral("F/A"));
        library.addValue(QStringLiteral("F"), formula, QStringLiteral("1000"));
        library.addValue(QStringLiteral("A"), formula, QStringLiteral("1"));
        EXPECT_TRUE(library.funcs().EditFormulaVarPara(
            QStringLiteral("A"), formula, 1, QStringLiteral("截面面积"), library.connection()));
    }

    TestLibrary library;
    TestConfiguration configuration{&library};
    qint32 formula = 0;
};

TEST_F(HostProtocol, AVariableFedByAPropertyShowsTheHostsAnswer) {
    Desk desk;
    desk.properties[QStringLiteral("截面面积")] = QStringLiteral("250");
    desk.run(configuration.folder());
    EXPECT_EQ(desk.askedProperties, QStringList{QStringLiteral("截面面积")});
    EXPECT_EQ(desk.value(QStringLiteral("A")), QStringLiteral("250"));
    EXPECT_EQ(desk.result(), QStringLiteral("4.00"));
    EXPECT_EQ(desk.grid().CellForeColor(2, 0), 0xFF0000U) << "blue";
    EXPECT_EQ(desk.grid().CellForeColor(1, 0), 0U) << "black";
}

TEST_F(HostProtocol, AHostWithoutAnswerGivesZero) {
    Desk desk(configuration.folder());
    EXPECT_EQ(desk.value(QStringLiteral("A")), QStringLiteral("0"));
    EXPECT_EQ(desk.result(), QStringLiteral("除数不能为零！"));
    EXPECT_FALSE(desk.isEnabled("cmdCopy"));
}

TEST_F(HostProtocol, SetCellInfoAsksAgainAndRecalculates) {
    Desk desk;
    desk.properties[QStringLiteral("截面面积")] = QStringLiteral("250");
    desk.run(configuration.folder());
    desk.properties[QStringLiteral("截面面积")] = QStringLiteral("500");
    desk.control().SetCellInfo(1, 2, 3, -4, 5, 2147483647);
    EXPECT_EQ(desk.value(QStringLiteral("A")), QStringLiteral("500"));
    EXPECT_EQ(desk.result(), QStringLiteral("2.00"));
    std::array<qint32, 6> cell{};
    desk.control().GetCellInfo(cell[0], cell[1], cell[2], cell[3], cell[4], cell[5]);
    EXPECT_EQ(cell, (std::array<qint32, 6>{1, 2, 3, -4, 5, 2147483647}));
}

TEST_F(HostProtocol, SetCellInfoOnlyStoresWhileNoFormulaIsShown) {
    Desk desk;
    std::array<qint32, 6> cell{9, 9, 9, 9, 9, 9};
    desk.control().GetCellInfo(cell[0], cell[1], cell[2], cell[3], cell[4], cell[5]);
    EXPECT_EQ(cell, (std::array<qint32, 6>{}));
    desk.run(configuration.folder());
    desk.clickEmptySpace(desk.list());
    desk.askedProperties.clear();
    desk.control().SetCellInfo(1, 2, 3, 4, 5, 6);
    EXPECT_TRUE(desk.askedProperties.isEmpty());
    desk.control().GetCellInfo(cell[0], cell[1], cell[2], cell[3], cell[4], cell[5]);
    EXPECT_EQ(cell, (std::array<qint32, 6>{1, 2, 3, 4, 5, 6}));
}

TEST_F(HostProtocol, ThePassedResultArrivesAtTheHostsWindowWithItsHandle) {
    class Receiver : public QObject {
      public:
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == ui::registerWindowMessage(QStringLiteral("WM_CALCMSG"))) {
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
    desk.properties[QStringLiteral("截面面积")] = QStringLiteral("250");
    desk.run(configuration.folder());
    desk.installEventFilter(&receiver);
    QTest::mouseClick(&desk.child<QPushButton>("cmdSend"), Qt::LeftButton);
    EXPECT_TRUE(receiver.texts.isEmpty()) << "posted, not sent";
    settle();
    EXPECT_EQ(receiver.texts, QStringList{QStringLiteral("4.00")});
    EXPECT_EQ(receiver.words, QList<quintptr>{0});
}

TEST_F(HostProtocol, TheToolBarOffersOnlyWhatWorks) {
    Desk desk(configuration.folder());
    auto& bar = desk.child<QToolBar>("tbEdit");
    QStringList keys;
    QStringList enabled;
    for (const QAction* action : bar.actions()) {
        if (!action->isSeparator()) {
            keys.append(action->text());
            EXPECT_FALSE(action->icon().isNull()) << action->text().toStdString();
            EXPECT_EQ(action->toolTip(), action->text());
            if (action->isEnabled()) {
                enabled.append(action->text());
            }
        }
    }
    EXPECT_EQ(keys.join(u' '),
              QStringLiteral(
                  "新建公式夹 新建公式 复制 粘贴 删除 上移 下移 查找 查找下一个 查找上一个 帮助"));
    EXPECT_TRUE(enabled.contains(QStringLiteral("帮助")));
    desk.clickEditButton(QStringLiteral("帮助"));
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("无法找到帮助文件！")});
}

TEST_F(HostProtocol, TheResultBoxHasNoContextMenu) {
    Desk desk(configuration.folder());
    auto& box = desk.child<QLineEdit>("txtResult");
    QTest::mouseClick(&box, Qt::RightButton);
    settle();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_TRUE(box.isReadOnly());
}

/// Presses on a bar, moves the pointer sideways and releases.
void drag(QWidget& bar, int by) {
    const QPoint grip(1, bar.height() / 2);
    QTest::mousePress(&bar, Qt::LeftButton, {}, grip);
    QTest::mouseMove(&bar, grip + QPoint(by, 0));
    QMouseEvent move(QEvent::MouseMove, QPointF(grip + QPoint(by, 0)),
                     QPointF(bar.mapToGlobal(grip + QPoint(by, 0))), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(&bar, &move);
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, grip + QPoint(by, 0));
    settle();
}

TEST_F(HostProtocol, TheSplittersMoveThePanesWithinTheirLimits) {
    Desk desk(configuration.folder(), {1000, 700});
    auto& treeBar = desk.child<QWidget>("picShowTreeSepar");
    auto& listBar = desk.child<QWidget>("picShowFormulaSepar");
    const auto treeWidth = [&] { return desk.child<QWidget>("picTreeContain").width(); };
    const auto panel = [&] { return desk.child<QWidget>("picFormula").geometry(); };

    drag(treeBar, 60);
    EXPECT_NEAR(treeWidth(), 141 + 60, 2);
    EXPECT_EQ(desk.child<QWidget>("picBackGround").geometry().right(), 999);
    drag(treeBar, -900);
    EXPECT_NEAR(treeWidth(), 1700 / 15, 1);
    drag(treeBar, 2000);
    EXPECT_NEAR(treeWidth(), 1000 - 4630 / 15, 1);
    drag(treeBar, -400);

    drag(listBar, -2000);
    EXPECT_NEAR(desk.list().width(), 1800 / 15, 1);
    drag(listBar, 2000);
    EXPECT_NEAR(panel().width(), 1800 / 15, 1);
    drag(listBar, -100);
    EXPECT_NEAR(panel().width(), 1800 / 15 + 100, 2);
    EXPECT_EQ(panel().right(), desk.child<QWidget>("picBackGround").width() - 1);
    EXPECT_FALSE(desk.isShown("picFormulaSepar"));
}

TEST_F(HostProtocol, NoFontCutsTheTextsOfTheLowerBands) {
    Desk desk(configuration.folder(), {640, 480});
    desk.clickNode(QStringLiteral("库1"));
    for (const int points : {8, 9, 12, 16}) {
        QFont font = desk.font();
        font.setPointSize(points);
        desk.setFont(font);
        settle();
        for (const QPushButton* button :
             desk.child<QWidget>("picResult").findChildren<QPushButton*>()) {
            const QSize text = button->fontMetrics().size(Qt::TextShowMnemonic, button->text());
            EXPECT_GT(button->width(), text.width()) << points << button->text().toStdString();
        }
        const QHeaderView& header = *desk.grid().horizontalHeader();
        EXPECT_GE(header.sectionSize(0),
                  header.fontMetrics().horizontalAdvance(desk.grid().GetCellText(0, 0)))
            << points;
        EXPECT_GE(desk.grid().rowHeight(0), desk.grid().fontMetrics().height()) << points;
        EXPECT_GE(desk.formulaBox().height(), desk.formulaBox().fontMetrics().height()) << points;
        EXPECT_EQ(desk.formulaBox().font().pointSize(), points);
        if (points <= 9) {
            EXPECT_EQ(header.sectionSize(0), 800 / 15) << "the usual width is kept";
        }
    }
}

TEST_F(HostProtocol, TheControlIsNeverSmallerThanItsLeastSize) {
    Desk desk(configuration.folder(), {300, 200});
    EXPECT_GE(desk.control().width(), 7000 / 15);
    EXPECT_GE(desk.control().height(), 6000 / 15);
}

}  // namespace
}  // namespace varo::test
