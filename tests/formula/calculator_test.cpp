#include "formula/panel.h"

#include <QClipboard>

namespace varo::test {
namespace {

using State = ui::ResultBox::State;

class Calculation : public Panel {
  protected:
    Calculation() { showNew(u"1"_s); }

    /// The result box after the formula was typed, values given and "计算" clicked.
    QString calculated(const QString& formula,
                       std::initializer_list<std::pair<QString, QString>> values = {}) {
        box.setText(formula);
        for (const auto& [name, value] : values) {
            typeValue(name, value);
        }
        click(area.cmdCalCulate);
        return result.text();
    }

    ResultForm& area = form.panel.result;
};

TEST_F(Calculation, ShowsTheResultOrWhatIsWrong) {
    struct {
        const char* formula;
        const char* result;
        bool valid;
    } const cases[] = {
        {"1/3", "0.33", true},
        {"\"梁\"", "梁", true},
        {"1+", "公式不完整！", false},
        {"1/0", "除数不能为零！", false},
        {"sin(\"a\")", "函数“sin”的第1参量只能被赋予数值型参数。", false},
        {"StrLen(5)", "函数“StrLen”的第1参量只能被赋予文本型参数。", false},
        {"mod(5)", "函数“mod”的参数不足。", false},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(calculated(QString::fromUtf8(each.formula)), QString::fromUtf8(each.result));
        EXPECT_EQ(result.state(), each.valid ? State::Normal : State::Error) << each.formula;
        EXPECT_EQ(canUseResult(), each.valid) << each.formula;
    }
    EXPECT_EQ(calculated(QString()), QString());
    EXPECT_EQ(result.state(), State::Normal);
    EXPECT_FALSE(canUseResult());
    EXPECT_TRUE(questions.informed.isEmpty());
}

TEST_F(Calculation, AnErrorAfterAResultLeavesNothingToPassOn) {
    const qint32 formula = library.addFormula(0, u"式"_s, u"1/A"_s);
    library.addValue(u"A"_s, formula, u"1"_s);
    library.setSource(u"A"_s, formula, VarSourceProperty, u"面积"_s);
    properties[u"面积"_s] = u"4"_s;
    show(formula);
    EXPECT_TRUE(canUseResult());
    properties.clear();
    pane.refreshPropertyValues();
    EXPECT_EQ(result.state(), State::Error);
    EXPECT_FALSE(canUseResult());
}

TEST_F(Calculation, TakesValuesByTheTypeThatTheFormulaGivesTheirVariable) {
    EXPECT_EQ(calculated(u"StrLen(v)"_s, {{u"v"_s, u"12"_s}}), u"2.00"_s);
    EXPECT_EQ(calculated(u"v+1"_s), u"13.00"_s);
    EXPECT_EQ(calculated(u"StrLen(v)"_s), u"2.00"_s);
    const QString formula = u"If(s Equal \"梁\",x,0)"_s;
    EXPECT_EQ(calculated(formula, {{u"s"_s, u"梁"_s}, {u"x"_s, u"+1.5E2"_s}}), u"150.00"_s);
    for (const QString& wrong : {u"12a"_s, u"1,5"_s, u"1e999"_s}) {
        EXPECT_EQ(calculated(formula, {{u"x"_s, wrong}}),
                  u"用户为变量“x”所赋的值与变量类型不符！"_s);
        EXPECT_FALSE(canUseResult());
    }
}

TEST_F(Calculation, FollowsTheDecimalPlaces) {
    const std::pair<const char*, const char*> cases[] = {
        {"0", "2"}, {"", "2"}, {"3", "1.667"}, {"15", "1.666666666666670"}};
    for (const auto& [places, expected] : cases) {
        area.txtPrecision->setText(QString::fromLatin1(places));
        EXPECT_EQ(calculated(u"5/3"_s), QString::fromLatin1(expected)) << places;
    }
}

TEST_F(Calculation, TheMemorySumsNumericResultsUntilItIsCleared) {
    click(area.CmdAddResult);
    EXPECT_EQ(result.text(), u"0.00"_s);
    area.txtPrecision->setText(u"1"_s);
    for (const char* formula : {"1.5", "2", "\"text\"", "1/0"}) {
        calculated(QString::fromLatin1(formula));
        click(area.cmdSaveResult);
    }
    EXPECT_EQ(grid.GetListCount(), 2);
    area.txtPrecision->setText(u"2"_s);
    click(area.CmdAddResult);
    EXPECT_EQ(result.text(), u"3.50"_s);
    EXPECT_EQ(result.state(), State::Normal);
    EXPECT_FALSE(canUseResult()) << "the sum is no result of the formula";
    click(area.cmdClearResult);
    EXPECT_EQ(result.text(), u"3.50"_s);
    EXPECT_EQ(grid.GetListCount(), 0);
    click(area.CmdAddResult);
    EXPECT_EQ(result.text(), u"0.00"_s);
}

TEST_F(Calculation, EnterInTheFormulaBoxAndTheMnemonicCalculateWhatIsCopied) {
    box.setText(u"2^10"_s);
    box.setFocus();
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(result.text(), u"1024.00"_s);
    click(area.cmdCopy);
    EXPECT_EQ(QApplication::clipboard()->text(), u"1024.00"_s);
    box.setText(u"2^3"_s);
    box.setFocus();
    QTest::keyClick(&box, Qt::Key_U, Qt::AltModifier);
    // A button pressed by its mnemonic stays down for a moment.
    EXPECT_TRUE(QTest::qWaitFor([this] { return result.text() == u"8.00"_s; }));
}

TEST_F(Calculation, AValueThatIsBeingTypedCounts) {
    box.setText(u"z+1"_s);
    beginTyping(grid, u"z"_s, u"41"_s);
    click(area.cmdCalCulate);
    EXPECT_EQ(result.text(), u"42.00"_s);
}

TEST_F(Calculation, AResultOfEarlierInputIsMarkedAndCannotBePassedOn) {
    const std::function<void()> changes[] = {
        [this] { QTest::keyClicks(&box, u"1"_s); },
        [this] { typeValue(u"x"_s, u"7"_s); },
        [this] { typeValue(u"x"_s, QString(256, u'1')); },
        [this] { box.clear(); },
    };
    for (const auto& change : changes) {
        calculated(u"x*2"_s, {{u"x"_s, u"4"_s}});
        ASSERT_EQ(result.state(), State::Normal);
        ASSERT_TRUE(canUseResult());
        change();
        EXPECT_EQ(result.text(), u"8.00"_s);
        EXPECT_EQ(result.state(), State::Stale);
        EXPECT_TRUE(result.toolTip().contains(u"请重新计算"_s));
        EXPECT_FALSE(canUseResult());
        // A sum stays true, but is no result of the formula.
        click(area.CmdAddResult);
        EXPECT_EQ(result.state(), State::Normal);
        QTest::keyClicks(&box, u"+1"_s);
        EXPECT_EQ(result.state(), State::Normal);
        EXPECT_FALSE(canUseResult());
    }
    calculated(u"1/0"_s);
    box.setText(u"1/1"_s);
    EXPECT_EQ(result.state(), State::Stale) << "an error too";
}

TEST_F(Calculation, AValueThatCannotBeReadIsMarkedAndSoIsItsResult) {
    const qint32 sum = library.addFormula(0, u"和"_s, u"a+1"_s);
    {
        const MissingColumn missing(library, "RecentVar", "VarName");
        show(sum);
    }
    EXPECT_EQ(textsOf(grid), QStringList{u"a=0"_s});
    EXPECT_TRUE(grid.CellNote(1, 1).contains(u"无法读取"_s));
    EXPECT_EQ(result.text(), u"1.00"_s);
    EXPECT_EQ(result.state(), State::Doubtful);
    EXPECT_TRUE(result.toolTip().contains(u"变量“a”：无法读取"_s));
    typeValue(u"a"_s, u"4"_s);
    EXPECT_EQ(grid.CellNote(1, 1), QString());
    EXPECT_EQ(result.state(), State::Stale);
    click(area.cmdCalCulate);
    EXPECT_EQ(result.text(), u"5.00"_s);
    EXPECT_EQ(result.state(), State::Normal);
    const MissingColumn missing(library, "RecentVar", "VarName");
    box.setText(u"b/c"_s);
    box.setText(u"a"_s);
    EXPECT_EQ(grid.CellNote(1, 1), QString()) << "a note does not stay behind in its row";
}

}  // namespace
}  // namespace varo::test
