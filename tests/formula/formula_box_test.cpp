#include "formula/panel.h"

namespace varo::test {
namespace {

/// The panel with the first of two formulas shown.
class FormulaBoxTest : public Panel {
  protected:
    FormulaBoxTest() { show(first); }

    QString expression(qint32 formula) { return stored(formula, u"Formula"_s); }

    /// Replaces the text of the box by typing.
    void type(const QString& text) {
        box.setFocus();
        box.selectAll();
        QTest::keyClick(&box, Qt::Key_Delete);
        box.insert(text);
    }

    const qint32 first = library.addFormula(0, u"一"_s, u"a+b"_s);
    const qint32 second = library.addFormula(0, u"二"_s, u"c"_s);
};

TEST_F(FormulaBoxTest, ATextIsStoredWhenTheBoxLosesTheFocus) {
    for (const QString& text : {u"a*b"_s, u"'\";--%_ 𝛔"_s, QString(255, u'9'), u"a+b"_s}) {
        type(text);
        EXPECT_NE(expression(first), text);
        leave();
        EXPECT_EQ(expression(first), text);
        EXPECT_EQ(told.last(), u"%1|%2"_s.arg(first).arg(text));
    }
    type(QString());
    leave();
    EXPECT_EQ(expression(first), u"a+b"_s) << "an empty text is never stored";
    show(first);
    type(u"a-b"_s);
    leave();
    while (box.isUndoAvailable()) {
        box.undo();
    }
    EXPECT_TRUE(pane.storeEdits());
    EXPECT_EQ(expression(first), u"a+b"_s) << "brought back with undo";
    show(second);
    EXPECT_EQ(expression(second), u"c"_s);
    EXPECT_EQ(told.size(), 6);
}

TEST_F(FormulaBoxTest, TheBoxTakes255CharactersButShowsALongerTextWholeFromItsBeginning) {
    type(QString(254, u'1'));
    QTest::keyClicks(&box, u"23"_s);
    EXPECT_EQ(box.text(), QString(254, u'1') + u'2');
    EXPECT_EQ(box.cursorPosition(), 255);
    const QString text = QString(300, u'1') + u"+z"_s;
    ASSERT_TRUE(library.funcs().EditFormulaExpression(second, text, library.connection()));
    show(second);
    EXPECT_EQ(box.text(), text);
    EXPECT_EQ(box.cursorPosition(), 0);
    EXPECT_TRUE(box.toolTip().contains(text));
    box.setFocus();
    QTest::keyClick(&box, Qt::Key_Delete);
    leave();
    EXPECT_EQ(questions.informed, QStringList{u"用户输入的公式超过255个字符！"_s});
    EXPECT_EQ(expression(second), text);
}

TEST_F(FormulaBoxTest, AFailedStoreIsToldOnceForAMoveAndNothingIsLost) {
    library.refuse("Update", "Formula");
    type(u"a-b"_s);
    leave();
    EXPECT_TRUE(pane.storeEdits());
    EXPECT_EQ(questions.informed, QStringList{u"无法编辑选定公式的内容！"_s});
    EXPECT_EQ(box.text(), u"a-b"_s);
    EXPECT_TRUE(told.isEmpty());
    type(u"a-b"_s);
    leave();
    EXPECT_EQ(questions.informed.size(), 2);
    library.allow();
    EXPECT_TRUE(pane.storeEdits());
    EXPECT_EQ(expression(first), u"a-b"_s);
}

TEST_F(FormulaBoxTest, NothingIsStoredInAFormulaThatIsNotShown) {
    TestLibrary other;
    const qint32 same = other.addFormula(0, u"一"_s, u"kept"_s);
    ASSERT_EQ(same, first);
    addLibrary(other);
    type(u"a-b"_s);
    typeValue(u"a"_s, u"8"_s);
    ASSERT_TRUE(current.open(2));
    type(u"b"_s);
    typeValue(u"b"_s, u"9"_s);
    leave();
    EXPECT_TRUE(pane.storeEdits());
    EXPECT_EQ(other.rows(u"select Formula from Formula"_s), QStringList{u"kept"_s});
    EXPECT_TRUE(other.rows(u"select * from RecentVar"_s).isEmpty());
    EXPECT_FALSE(pane.shown());
    ASSERT_TRUE(current.open(1));
    EXPECT_EQ(pane.shown(), first);
    pane.ClearFormulaPanel();
    box.setText(u"typed"_s);
    EXPECT_TRUE(pane.storeEdits());
    EXPECT_EQ(expression(first), u"a-b"_s);
}

}  // namespace
}  // namespace varo::test
