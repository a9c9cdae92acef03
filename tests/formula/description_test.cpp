#include "formula/panel.h"

namespace varo::test {
namespace {

/// The panel with a formula shown whose description is 说明一.
class DescriptionTest : public Panel {
  protected:
    DescriptionTest() { show(first); }

    QString storedMemo() { return stored(first, u"Memo"_s); }

    /// Chooses 说明 and gives the box the focus.
    void enter() {
        click(area.optDesc[DescOptionText]);
        memo.setFocus();
        settle();
    }

    DescriptionForm& area = form.panel.description;
    const qint32 first = library.addFormula(0, u"一"_s, u"a+b"_s, u"说明一\r\n第二行"_s);
    const qint32 second = library.addFormula(0, u"二"_s, u"c"_s);
};

TEST_F(DescriptionTest, ADescriptionIsSelectedOnEntryAndStoredOnLeaving) {
    enter();
    leave();
    EXPECT_EQ(storedMemo(), u"说明一\r\n第二行"_s) << "other line ends are no change";
    enter();
    EXPECT_EQ(memo.textCursor().selectedText().size(), 7);
    QTest::keyClicks(&memo, u"It's 100%"_s);
    leave();
    EXPECT_EQ(storedMemo(), u"It's 100%"_s);
    enter();
    memo.setPlainText(u"说明一\n第二行"_s);
    leave();
    EXPECT_EQ(storedMemo(), u"说明一\n第二行"_s) << "what was there before is a change";
    enter();
    QTest::keyClick(&memo, Qt::Key_Delete);
    leave();
    EXPECT_EQ(storedMemo(), QString()) << "an empty description is stored like any other";
    EXPECT_EQ(told, (QStringList{u"1|It's 100%"_s, u"1|说明一\n第二行"_s, u"1|"_s}));
    EXPECT_TRUE(questions.informed.isEmpty());
}

TEST_F(DescriptionTest, ATooLongOneIsRefusedAndAFailedStoreToldAndNothingIsLost) {
    enter();
    memo.insertPlainText(QString(256, u'长'));
    leave();
    EXPECT_FALSE(pane.storeEdits());
    EXPECT_EQ(questions.informed, QStringList{u"用户输入的说明超过255个字符！"_s});
    EXPECT_TRUE(memo.hasFocus());
    EXPECT_TRUE(told.isEmpty());
    QTest::keyClick(&memo, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClick(&memo, Qt::Key_Backspace);
    library.refuse("Update", "Formula");
    leave();
    library.allow();
    EXPECT_EQ(questions.informed.value(1), u"无法编辑选定公式的备注！"_s);
    EXPECT_FALSE(memo.hasFocus());
    EXPECT_EQ(memo.toPlainText().size(), 255);
    EXPECT_TRUE(pane.storeEdits());
    EXPECT_EQ(storedMemo().size(), 255);
}

TEST_F(DescriptionTest, WithoutAFormulaThereIsNoBoxToTypeInto) {
    enter();
    ASSERT_TRUE(memo.isVisible());
    pane.ClearFormulaPanel();
    settle();
    EXPECT_FALSE(memo.isVisible());
    QTest::keyClicks(QApplication::focusWidget(), u"lost?"_s);
    click(area.optDesc[DescOptionText]);
    EXPECT_FALSE(memo.isVisible());
    EXPECT_TRUE(pane.storeEdits());
    EXPECT_EQ(storedMemo(), u"说明一\r\n第二行"_s);
    // Nor is what was typed for one formula stored in the next.
    show(first);
    enter();
    QTest::keyClicks(&memo, u"x"_s);
    show(second);
    EXPECT_FALSE(memo.isVisible());
    leave();
    EXPECT_TRUE(told.isEmpty());
}

}  // namespace
}  // namespace varo::test
