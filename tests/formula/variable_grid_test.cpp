#include "formula/panel.h"

namespace varo::test {
namespace {

/// The panel with a+b shown; a is 3, the unowned b is 5.
class VariableGridTest : public Panel {
  protected:
    VariableGridTest() {
        library.addValue(u"a"_s, sum, u"3"_s);
        library.addValue(u"b"_s, 0, u"5"_s);
        show(sum);
    }

    /// Feeds a variable of the sum from a source.
    void setSource(const QString& name, qint32 source, const QString& parameter) {
        ASSERT_TRUE(
            library.funcs().EditFormulaVarPara(name, sum, source, parameter, library.connection()));
        current.close();
        ASSERT_TRUE(current.open(1));
        show(sum);
    }

    const qint32 sum = library.addFormula(0, u"和"_s, u"a+b"_s);
    const qint32 difference = library.addFormula(0, u"差"_s, u"a-b"_s);
};

TEST_F(VariableGridTest, ATypedValueIsStoredAtOnceAndAFailureIsTold) {
    typeValue(u"a"_s, u" 4.5"_s);
    typeValue(u"b"_s, QString());
    EXPECT_EQ(textsOf(grid), (QStringList{u"a= 4.5"_s, u"b=0"_s}));
    const QString rows = u"select FormulaID, VarName, Value from RecentVar order by VarName"_s;
    EXPECT_EQ(library.rows(rows), (QStringList{u"1|a|4.5"_s, u"1|b|0"_s}));
    EXPECT_TRUE(questions.informed.isEmpty());
    test::requireSqlite();
    library.connection().execute(u"drop table RecentVar"_s);
    typeValue(u"a"_s, u"6"_s);
    EXPECT_EQ(questions.informed, QStringList{u"无法编辑选定变量的值！"_s});
    EXPECT_EQ(textsOf(grid).first(), u"a=6"_s) << "the grid keeps what was typed";
}

TEST_F(VariableGridTest, TheGridFollowsTheFormulaBoxKeyByKey) {
    box.setFocus();
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_Delete);
    EXPECT_EQ(grid.Rows(), 1);
    QStringList steps;
    for (const char key : {'b', '*', '(', 'c', '+'}) {
        QTest::keyClick(&box, key);
        steps.append(textsOf(grid).join(u','));
    }
    EXPECT_EQ(steps.join(u' '), u"b=5 b=5 b=5 b=5,c=0 b=5,c=0"_s);
}

TEST_F(VariableGridTest, ANameHasTheColourOfItsSource) {
    const std::tuple<qint32, quint32, const char*> cases[] = {
        {VarSourceTable, 0x0000FF, "a=3"}, {VarSourceProperty, 0xFF0000, "a=7"}, {9, 0, "a="}};
    properties[u"面积"_s] = u"7"_s;
    EXPECT_EQ(grid.CellForeColor(1, 0), 0U);
    for (const auto& [source, color, shown] : cases) {
        setSource(u"a"_s, source, u"面积"_s);
        EXPECT_EQ(grid.CellForeColor(1, 0), color);
        EXPECT_EQ(textsOf(grid).first(), QString::fromLatin1(shown));
    }
    EXPECT_EQ(asked, QStringList{u"面积"_s});
}

TEST_F(VariableGridTest, WhatTheHostShowsWhileItIsAskedStays) {
    setSource(u"a"_s, VarSourceProperty, u"面积"_s);
    meanwhile = [this] { show(difference); };
    properties[u"面积"_s] = u"10"_s;
    show(sum);
    EXPECT_EQ(pane.shown(), difference);
    EXPECT_EQ(textsOf(grid), (QStringList{u"a=0"_s, u"b=5"_s}));
    EXPECT_EQ(result.text(), u"-5.00"_s);
    leave();
    EXPECT_TRUE(told.isEmpty());
}

TEST_F(VariableGridTest, ThePanelTakesInputOnlyWhileAFormulaIsShown) {
    for (const bool enabled : {true, false, true}) {
        pane.SetPanelState(enabled ? SelectionState::Formula : SelectionState::NoFormula);
        for (const char* name :
             {"optDesc0", "optDesc1", "TabStripSymbol", "txtFormula", "MSFEditVarList", "txtResult",
              "UpDownPrecision", "cmdCalCulate", "cmdSaveResult", "CmdAddResult", "cmdClearResult",
              "cmdCopy", "cmdSend"}) {
            EXPECT_EQ(window.findChild<QWidget*>(QLatin1StringView(name))->isEnabled(), enabled)
                << name;
        }
    }
    box.setFocus();
    EXPECT_TRUE(form.panel.symbols.tbSymbol[9]->isEnabled());
    EXPECT_EQ(grid.GetCellText(0, 0) + grid.GetCellText(0, 1), u"变量名称变量值"_s);
    pane.ClearFormulaPanel();
    EXPECT_EQ(grid.Rows(), 1);
    EXPECT_EQ(box.text() + result.text(), QString());
    EXPECT_FALSE(canUseResult());
}

}  // namespace
}  // namespace varo::test
