#include "support/desk.h"

#include <QApplication>
#include <QClipboard>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

/// The control with one formula shown, whose text a test replaces.
class Calculation : public testing::Test {
  protected:
    Calculation() {
        library.addFormula(0, QStringLiteral("式"), QStringLiteral("1"));
        desk.run(configuration.folder());
    }

    /// Result box after the formula was typed, values given and "计算" clicked.
    QString calculated(const QString& formula,
                       std::initializer_list<std::pair<QString, QString>> values = {}) {
        desk.formulaBox().setText(formula);
        for (const auto& [name, value] : values) {
            desk.typeValue(name, value);
        }
        desk.clickButton("cmdCalCulate");
        return desk.result();
    }

    void setPlaces(const QString& text) { desk.child<QLineEdit>("txtPrecision").setText(text); }

    TestLibrary library;
    TestConfiguration configuration{&library};
    Desk desk;
};

TEST_F(Calculation, ShowsTheResultOrWhatIsWrong) {
    struct {
        const char* formula;
        const char* result;
        bool valid;
    } const cases[] = {
        {"1/3", "0.33", true},
        {"-0.001", "0.00", true},
        {"2.675", "2.68", true},
        {"1e10*1000", "10000000000000.00", true},
        {"\"梁\"", "梁", true},
        {"StrCat(\"a\",\"b\")", "ab", true},
        {"", "", false},
        {"1+", "公式不完整！", false},
        {"1/0", "除数不能为零！", false},
        {"sin(\"a\")", "函数“sin”的第1参量只能被赋予数值型参数。", false},
        {"StrLen(5)", "函数“StrLen”的第1参量只能被赋予文本型参数。", false},
        {"mod(5)", "函数“mod”的参数不足。", false},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(calculated(QString::fromUtf8(each.formula)), QString::fromUtf8(each.result))
            << each.formula;
        for (const char* button : {"cmdSaveResult", "cmdCopy", "cmdSend"}) {
            EXPECT_EQ(desk.isEnabled(button), each.valid) << each.formula << ' ' << button;
        }
    }
    EXPECT_TRUE(desk.messages().isEmpty());
}

TEST_F(Calculation, TakesValuesByTheTypeOfTheVariable) {
    const QString formula = QStringLiteral("If(s Equal \"梁\",x,0)");
    const QString s = QStringLiteral("s");
    const QString x = QStringLiteral("x");
    EXPECT_EQ(calculated(formula, {{s, QStringLiteral("梁")}, {x, QStringLiteral("+1.5E2")}}),
              QStringLiteral("150.00"));
    EXPECT_EQ(calculated(formula, {{x, QStringLiteral("12a")}}),
              QStringLiteral("用户为变量“x”所赋的值与变量类型不符！"));
    EXPECT_FALSE(desk.isEnabled("cmdSaveResult"));
    EXPECT_EQ(calculated(formula, {{x, QStringLiteral("1,5")}}),
              QStringLiteral("用户为变量“x”所赋的值与变量类型不符！"));
}

TEST_F(Calculation, FollowsTheDecimalPlaces) {
    const std::pair<const char*, const char*> cases[] = {
        {"0", "2"}, {"", "2"}, {"3", "1.667"}, {"15", "1.666666666666670"}};
    for (const auto& [places, result] : cases) {
        setPlaces(QString::fromLatin1(places));
        EXPECT_EQ(calculated(QStringLiteral("5/3")), QString::fromLatin1(result)) << places;
    }
}

TEST_F(Calculation, TheMemorySumsNumericResultsUntilItIsCleared) {
    desk.clickButton("CmdAddResult");
    EXPECT_EQ(desk.result(), QStringLiteral("0.00"));
    setPlaces(QStringLiteral("1"));
    for (const char* formula : {"1.5", "2", "\"text\"", "1/0"}) {
        calculated(QString::fromLatin1(formula));
        desk.clickButton("cmdSaveResult");
    }
    EXPECT_EQ(desk.grid().GetListCount(), 2);
    setPlaces(QStringLiteral("2"));
    desk.clickButton("CmdAddResult");
    EXPECT_EQ(desk.result(), QStringLiteral("3.50"));
    desk.clickButton("cmdClearResult");
    EXPECT_EQ(desk.result(), QStringLiteral("3.50"));
    EXPECT_EQ(desk.grid().GetListCount(), 0);
    desk.clickButton("CmdAddResult");
    EXPECT_EQ(desk.result(), QStringLiteral("0.00"));
}

TEST_F(Calculation, CopiesTheResultAsText) {
    calculated(QStringLiteral("6*7"));
    desk.clickButton("cmdCopy");
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("42.00"));
}

TEST_F(Calculation, EnterInTheFormulaBoxAndTheMnemonicCalculate) {
    desk.formulaBox().setText(QStringLiteral("2^10"));
    desk.formulaBox().setFocus();
    QTest::keyClick(&desk.formulaBox(), Qt::Key_Return);
    EXPECT_EQ(desk.result(), QStringLiteral("1024.00"));
    desk.formulaBox().setText(QStringLiteral("2^3"));
    QTest::keyClick(&desk.formulaBox(), Qt::Key_U, Qt::AltModifier);
    // A button pressed by its mnemonic stays down for a moment.
    EXPECT_TRUE(QTest::qWaitFor([this] { return desk.result() == QStringLiteral("8.00"); }));
}

TEST_F(Calculation, AValueStillBeingTypedCounts) {
    desk.formulaBox().setText(QStringLiteral("z+1"));
    desk.grid().setFocus();
    const QModelIndex cell = desk.grid().model()->index(0, 1);
    desk.grid().setCurrentIndex(cell);
    QTest::keyClick(&desk.grid(), Qt::Key_F2);
    QWidget* editor = QApplication::focusWidget();
    ASSERT_NE(qobject_cast<QLineEdit*>(editor), nullptr);
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(editor, QStringLiteral("41"));
    desk.clickButton("cmdCalCulate");
    EXPECT_EQ(desk.result(), QStringLiteral("42.00"));
}

}  // namespace
}  // namespace varo::test
