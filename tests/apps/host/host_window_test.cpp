#include "host/host_window.h"

#include "control/varo_calcex.h"
#include "host/beam_library.h"
#include "host/cell_info_panel.h"
#include "host/line_list.h"
#include "host/locate_report.h"
#include "host/named_widget.h"
#include "host/property_table.h"
#include "platform/ui/registered_message.h"
#include "support/desk.h"

#include <QApplication>
#include <QSpinBox>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

namespace varo::host {
namespace {

using namespace Qt::StringLiterals;
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
        window_.control().ClickTreeNode(u"FormulaNode1->DBNode1"_s);
        settle();
    }

    void click(const char* button) {
        QTest::mouseClick(&namedWidget<QPushButton>(window_, button), Qt::LeftButton);
        settle();
    }

    test::BeamLibrary library_;
    test::TestConfiguration configuration_{&library_};
    test::RecordingQuestions questions_;
    HostWindow window_{&questions_};
    PropertyTable& properties_ = window_.properties();
};

TEST_F(HostWindowTest, AnswersPropertiesFromTheTableAndTakesOnlyResultsThatArePassedOn) {
    EXPECT_EQ(window_.log().lines().last(), u"GetPropValue 截面面积：没有这个属性"_s);
    properties_.setValue(u"截面面积"_s, u"6"_s);
    selectFormula();
    EXPECT_EQ(window_.log().lines().last(), u"GetPropValue 截面面积 = 6"_s);
    properties_.setValue(u"截面面积"_s, u"8"_s);
    click("writeCell");
    ui::postWindowMessage(&window_, ui::registerWindowMessage(u"SOMETHING_ELSE"_s), 0,
                          ui::windowHandleOf(&namedWidget<QLineEdit>(window_, "txtResult")));
    click("cmdSend");
    EXPECT_EQ(window_.results().lines(), QStringList{u"3.00"_s});
    QTest::mouseClick(&namedWidget<QPushButton>(window_.results(), "clear"), Qt::LeftButton);
    EXPECT_EQ(window_.results().lines(), QStringList());
}

TEST_F(HostWindowTest, PropertiesAreTypedIntoTheTableAndRemoved) {
    const auto type = [](const QString& text) {
        for (const QChar character : text) {  // the first key opens the editor
            QTest::keyClicks(QApplication::focusWidget(), character);
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        settle();
    };
    auto& table = namedWidget<QTableWidget>(window_, "properties");
    click("addProperty");
    type(u"length"_s);
    table.setCurrentCell(0, 1);
    type(u"6.5"_s);
    EXPECT_EQ(properties_.valueOf(u"length"_s), u"6.5"_s);
    properties_.setValue(u"width"_s, u"2"_s);
    table.setCurrentCell(0, 1);
    click("removeProperty");
    EXPECT_EQ(properties_.valueOf(u"length"_s), std::nullopt);
    EXPECT_EQ(properties_.valueOf(u"width"_s), u"2"_s);
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

TEST_F(HostWindowTest, StepsPastWhatIsGone) {
    library_.addProperty(0, u"用途"_s, 0, 9, NodeTypeFolder);
    library_.addProperty(0, u"用途"_s, 0, 0, NodeTypeFolder);
    EXPECT_EQ(locateLines(window_.control(), u"用途"_s), QStringList{u"located: 库1"_s});
    EXPECT_EQ(questions_.informed, QStringList(2, u"用户需要定位的节点不存在！"_s));
}

TEST_F(HostWindowTest, AnotherFolderTakesThePlaceOfTheFirst) {
    const auto libraries = [this] {
        return namedWidget<ui::NodeView>(window_, "tvFolder").model()->rowCount();
    };
    const test::TestConfiguration empty;
    empty.write("[Access]\nNodeCount=0\n");
    window_.openFolder(empty.folder());
    EXPECT_EQ(libraries(), 0);
    window_.openFolder(configuration_.folder());
    EXPECT_EQ(libraries(), 1);
    EXPECT_EQ(questions_.informed, QStringList());
}

}  // namespace
}  // namespace varo::host
