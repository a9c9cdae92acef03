#include "host/host_window.h"

#include "control/varo_calcex.h"
#include "host/beam_library.h"
#include "host/cell_info_panel.h"
#include "host/line_list.h"
#include "host/named_widget.h"
#include "host/property_table.h"
#include "platform/ui/registered_message.h"
#include "support/desk.h"

#include <QApplication>
#include <QMenuBar>
#include <QSpinBox>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

namespace varo::host {
namespace {

using test::settle;

/// The window with the beam library's formula selected.
class HostWindowTest : public testing::Test {
  protected:
    HostWindowTest() {
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        window_.openFolder(configuration_.folder());
        selectFormula();
    }

    void selectFormula() {
        window_.control().ClickTreeNode(QStringLiteral("FormulaNode1->DBNode1"));
        settle();
    }

    void click(const char* button) {
        QTest::mouseClick(&namedWidget<QPushButton>(window_, button), Qt::LeftButton);
        settle();
    }

    QString result() { return namedWidget<QLineEdit>(window_, "txtResult").text(); }

    test::BeamLibrary library_;
    test::TestConfiguration configuration_{&library_};
    test::RecordingQuestions questions_;
    HostWindow window_{&questions_};
};

TEST_F(HostWindowTest, APassedOnResultArrives) {
    window_.properties().setValue(QStringLiteral("截面面积"), QStringLiteral("8"));
    click("writeCell");
    ASSERT_EQ(result(), QStringLiteral("3.00"));
    click("cmdSend");
    EXPECT_EQ(window_.results().lines(), QStringList{QStringLiteral("3.00")});
}

TEST_F(HostWindowTest, OnlyTheCalculatorsMessageIsAResult) {
    auto& box = namedWidget<QLineEdit>(window_, "txtResult");
    const auto other = ui::registerWindowMessage(QStringLiteral("SOMETHING_ELSE"));
    ui::postWindowMessage(&window_, other, 0, ui::windowHandleOf(&box));
    settle();
    EXPECT_EQ(window_.results().lines(), QStringList());
}

TEST_F(HostWindowTest, AnUnknownPropertyGetsNoAnswerAndIsLogged) {
    EXPECT_EQ(namedWidget<ui::EditGrid>(window_, "MSFEditVarList").GetCellText(2, 1),
              QStringLiteral("0"));
    EXPECT_EQ(window_.log().lines().last(), QStringLiteral("GetPropValue 截面面积：没有这个属性"));
}

TEST_F(HostWindowTest, APropertyOfTheTableIsAnswered) {
    window_.properties().setValue(QStringLiteral("截面面积"), QStringLiteral("6"));
    selectFormula();
    EXPECT_EQ(result(), QStringLiteral("4.00"));
    EXPECT_EQ(window_.log().lines().last(), QStringLiteral("GetPropValue 截面面积 = 6"));
}

TEST_F(HostWindowTest, AnAddedPropertyIsTypedIntoTheTable) {
    auto& table = namedWidget<QTableWidget>(window_, "properties");
    click("addProperty");
    ASSERT_NE(QApplication::focusWidget(), nullptr);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("length"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    settle();
    table.setCurrentCell(0, 1);
    QTest::keyClicks(&table, QStringLiteral("6"));
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral(".5"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    settle();
    EXPECT_EQ(window_.properties().valueOf(QStringLiteral("length")), QStringLiteral("6.5"));
}

TEST_F(HostWindowTest, ARemovedPropertyIsUnknown) {
    window_.properties().setValue(QStringLiteral("甲"), QStringLiteral("1"));
    window_.properties().setValue(QStringLiteral("乙"), QStringLiteral("2"));
    window_.properties().setValue(QStringLiteral("甲"), QStringLiteral("3"));
    auto& remove = namedWidget<QPushButton>(window_, "removeProperty");
    EXPECT_FALSE(remove.isEnabled());
    namedWidget<QTableWidget>(window_, "properties").setCurrentCell(0, 1);
    click("removeProperty");
    EXPECT_EQ(window_.properties().valueOf(QStringLiteral("甲")), std::nullopt);
    EXPECT_EQ(window_.properties().valueOf(QStringLiteral("乙")), QStringLiteral("2"));
}

TEST_F(HostWindowTest, CellNumbersComeBackFromTheControl) {
    auto& panel = *window_.findChild<CellInfoPanel*>();
    const CellNumbers numbers{
        1, -2, 3, std::numeric_limits<qint32>::max(), 5, std::numeric_limits<qint32>::min()};
    panel.setNumbers(numbers);
    EXPECT_EQ(namedWidget<QSpinBox>(window_, "RecordsetID").value(), numbers[3]);
    click("writeCell");
    panel.setNumbers({});
    click("readCell");
    EXPECT_EQ(panel.numbers(), numbers);
}

TEST_F(HostWindowTest, AnotherFolderTakesThePlaceOfTheFirst) {
    const test::TestConfiguration empty;
    empty.write("[Access]\nNodeCount=0\n");
    window_.openFolder(empty.folder());
    EXPECT_EQ(namedWidget<ui::NodeView>(window_, "tvFolder").model()->rowCount(), 0);
    window_.openFolder(configuration_.folder());
    EXPECT_EQ(namedWidget<ui::NodeView>(window_, "tvFolder").model()->rowCount(), 1);
    EXPECT_EQ(questions_.informed, QStringList());
}

TEST_F(HostWindowTest, TheMenuHasEveryMethodOfTheControl) {
    QStringList methods;
    for (const QAction* action : window_.menuBar()->actions().at(1)->menu()->actions()) {
        methods.append(action->text().remove(u'…'));
    }
    methods.removeAll(QString());
    methods.sort();
    EXPECT_EQ(methods.join(u' '),
              QStringLiteral("ClickTreeNode GetCellInfo RunCalc SelFormula SetCellInfo "
                             "SetDeployFolder SetDesignProp SetSelPropValue"));
}

TEST_F(HostWindowTest, ClearingForgetsTheResults) {
    window_.results().append(QStringLiteral("1.00"));
    auto& clear = namedWidget<QPushButton>(window_.results(), "clear");
    ASSERT_TRUE(clear.isEnabled());
    QTest::mouseClick(&clear, Qt::LeftButton);
    EXPECT_EQ(window_.results().lines(), QStringList());
    EXPECT_FALSE(clear.isEnabled());
}

}  // namespace
}  // namespace varo::host
