#include "support/desk.h"

#include <QPlainTextEdit>
#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

/// A library with two formulas, the first one shown, and what the file holds of them.
class TextBoxes : public testing::Test {
  protected:
    TextBoxes() {
        first = library.addFormula(0, QStringLiteral("一"), QStringLiteral("a+b"),
                                   QStringLiteral("说明一"));
        second = library.addFormula(0, QStringLiteral("二"), QStringLiteral("c"));
        desk.run(configuration.folder());
    }

    QString stored(qint32 formula, const QString& column) {
        data::Recordset rs;
        EXPECT_TRUE(library.funcs().GetFormulaByID(formula, rs, library.connection()));
        return rs.text(column);
    }
    QString expression(qint32 formula) { return stored(formula, QStringLiteral("Formula")); }
    QString memo(qint32 formula) { return stored(formula, QStringLiteral("Memo")); }

    QPlainTextEdit& memoBox() { return desk.child<QPlainTextEdit>("txtDesc"); }
    void showMemo() {
        QTest::mouseClick(&desk.child<QRadioButton>("optDesc0"), Qt::LeftButton, {}, {8, 8});
        memoBox().setFocus();
        settle();
    }
    /// Replaces the whole text of the formula box by typing.
    void typeFormula(const QString& text) {
        desk.formulaBox().setFocus();
        desk.formulaBox().selectAll();
        QTest::keyClick(&desk.formulaBox(), Qt::Key_Delete);
        desk.formulaBox().insert(text);
    }

    TestLibrary library;
    TestConfiguration configuration{&library};
    Desk desk;
    qint32 first = 0;
    qint32 second = 0;
};

TEST_F(TextBoxes, AFormulaIsStoredWhenItsBoxLosesTheFocus) {
    for (const QString& text :
         {QStringLiteral("a*b"), QStringLiteral("'\";--%_ 𝛔"), QString(255, u'9')}) {
        typeFormula(text);
        EXPECT_NE(expression(first), text);
        desk.list().setFocus();
        EXPECT_EQ(expression(first), text);
    }
    desk.clickFormula(QStringLiteral("二"));
    desk.clickFormula(QStringLiteral("一"));
    EXPECT_EQ(desk.formulaBox().text(), QString(255, u'9'));
    EXPECT_EQ(expression(second), QStringLiteral("c"));
}

TEST_F(TextBoxes, AnEmptyFormulaIsNeverStored) {
    typeFormula(QString());
    desk.list().setFocus();
    EXPECT_EQ(expression(first), QStringLiteral("a+b"));
}

TEST_F(TextBoxes, TheFormulaBoxTakes255Characters) {
    typeFormula(QString(254, u'1'));
    QTest::keyClicks(&desk.formulaBox(), QStringLiteral("23"));
    EXPECT_EQ(desk.formulaBox().text(), QString(254, u'1') + u'2');
}

TEST_F(TextBoxes, ALongerStoredFormulaIsShownWholeAndNotCutByAnEdit) {
    const QString text = QString(300, u'1') + QStringLiteral("+z");
    ASSERT_TRUE(library.funcs().EditFormulaExpression(second, text, library.connection()));
    desk.clickNode(QStringLiteral("库1"));
    desk.clickFormula(QStringLiteral("二"));
    EXPECT_EQ(desk.formulaBox().text(), text);
    desk.formulaBox().setFocus();
    QTest::keyClick(&desk.formulaBox(), Qt::Key_Backspace);
    desk.list().setFocus();
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("用户输入的公式超过255个字符！")});
    EXPECT_EQ(expression(second), text);
}

TEST_F(TextBoxes, WhatIsBeingTypedIsStoredBeforeTheHostShowsAnotherFormula) {
    typeFormula(QStringLiteral("a-b"));
    desk.control().SelFormula(QStringLiteral("LvFormulaKey%1").arg(second));
    EXPECT_EQ(expression(first), QStringLiteral("a-b"));
    EXPECT_EQ(expression(second), QStringLiteral("c"));
    typeFormula(QStringLiteral("c*2"));
    desk.control().ClickTreeNode(QStringLiteral("DBNode1"));
    EXPECT_EQ(expression(second), QStringLiteral("c*2"));
    EXPECT_EQ(expression(first), QStringLiteral("a-b"));
}

TEST_F(TextBoxes, WhatIsBeingTypedIsStoredWhenTheControlGoes) {
    auto own = std::make_unique<Desk>(configuration.folder());
    own->formulaBox().setFocus();
    QTest::keyClicks(&own->formulaBox(), QStringLiteral("*2"));
    own.reset();
    EXPECT_EQ(expression(first), QStringLiteral("a+b*2"));
    own = std::make_unique<Desk>(configuration.folder());
    QTest::mouseClick(&own->child<QRadioButton>("optDesc0"), Qt::LeftButton, {}, {8, 8});
    own->child<QPlainTextEdit>("txtDesc").setFocus();
    own->child<QPlainTextEdit>("txtDesc").insertPlainText(QStringLiteral("新"));
    own.reset();
    EXPECT_TRUE(memo(first).contains(u'新'));
}

TEST_F(TextBoxes, AMemoIsSelectedOnEntryAndStoredOnLeaving) {
    showMemo();
    EXPECT_EQ(memoBox().textCursor().selectedText(), QStringLiteral("说明一"));
    QTest::keyClicks(&memoBox(), QStringLiteral("It's 100%"));
    desk.list().setFocus();
    EXPECT_EQ(memo(first), QStringLiteral("It's 100%"));
    showMemo();
    QTest::keyClick(&memoBox(), Qt::Key_Delete);
    desk.list().setFocus();
    EXPECT_EQ(memo(first), QString()) << "an empty memo is stored like any other";
    EXPECT_TRUE(desk.messages().isEmpty());
}

TEST_F(TextBoxes, ATooLongMemoIsRefusedAndKeepsTheFocus) {
    showMemo();
    memoBox().insertPlainText(QString(256, u'长'));
    desk.list().setFocus();
    settle();
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("用户输入的说明超过255个字符！")});
    EXPECT_TRUE(memoBox().hasFocus());
    EXPECT_EQ(memo(first), QStringLiteral("说明一"));
    QTest::keyClick(&memoBox(), Qt::Key_End, Qt::ControlModifier);
    QTest::keyClick(&memoBox(), Qt::Key_Backspace);
    desk.list().setFocus();
    EXPECT_EQ(memo(first).size(), 255);
}

TEST_F(TextBoxes, ATooLongMemoIsNotLeftBehindByAClick) {
    showMemo();
    memoBox().insertPlainText(QString(300, u'长'));
    desk.clickFormula(QStringLiteral("二"));
    desk.clickNode(QStringLiteral("库1"));
    desk.control().SetDesignProp(QStringLiteral("用途"));
    EXPECT_EQ(memoBox().toPlainText().size(), 300);
    EXPECT_EQ(desk.list().selectedKey(), QStringLiteral("LvFormulaKey%1").arg(first));
    EXPECT_EQ(desk.messages().size(), 1) << "told once";
}

TEST_F(TextBoxes, ClearingThePanelWhileTheMemoHasTheFocusLosesNothing) {
    showMemo();
    desk.control().SelFormula(QStringLiteral("LvFormulaKey%1").arg(second));
    settle();
    desk.control().ClickTreeNode(QStringLiteral("DBNode1"));
    settle();
    EXPECT_EQ(memo(first), QStringLiteral("说明一"));
    EXPECT_EQ(memo(second), QString());
}

TEST_F(TextBoxes, AFailedStoreIsToldAndNothingIsLost) {
    library.connection().execute(QStringLiteral(
        "create trigger stop before update on Formula begin select raise(abort, 'no'); end"));
    typeFormula(QStringLiteral("a-b"));
    desk.list().setFocus();
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("无法编辑选定公式的内容！")});
    EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("a-b"));
    showMemo();
    QTest::keyClicks(&memoBox(), QStringLiteral("x"));
    desk.list().setFocus();
    EXPECT_EQ(desk.messages().last(), QStringLiteral("无法编辑选定公式的备注！"));
    EXPECT_EQ(expression(first), QStringLiteral("a+b"));
    EXPECT_EQ(memo(first), QStringLiteral("说明一"));
    // One move of the user, which leaves the box and gives a command, is told of once.
    desk.questions().informed.clear();
    desk.formulaBox().setFocus(Qt::ActiveWindowFocusReason);
    memoBox().setFocus();
    desk.clickNode(QStringLiteral("库1"));
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("无法编辑选定公式的备注！")});
    library.connection().execute(QStringLiteral("drop trigger stop"));
    typeFormula(QStringLiteral("a-b"));
    desk.list().setFocus();
    EXPECT_EQ(expression(first), QStringLiteral("a-b"));
}

TEST_F(TextBoxes, TheSymbolBarsAreOfferedWhileTheFormulaBoxHasTheFocus) {
    desk.formulaBox().setFocus();
    EXPECT_TRUE(desk.isEnabled("tbSymbol0"));
    EXPECT_TRUE(desk.isEnabled("tbSymbol9"));
    desk.list().setFocus();
    EXPECT_FALSE(desk.isEnabled("tbSymbol0"));
    EXPECT_TRUE(desk.isEnabled("TabStripSymbol"));
    EXPECT_TRUE(desk.formulaBox().toolTip().contains(QStringLiteral("a+b")));
}

}  // namespace
}  // namespace varo::test
