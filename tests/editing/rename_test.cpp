#include "support/beam_desk.h"

#include <QApplication>

namespace varo::test {
namespace {

class Rename : public BeamDesk {
  protected:
    /// Opens the label of the selected item of `view` and types.
    void rename(ui::NodeView& view, const QString& text) {
        view.setFocus();
        QTest::keyClick(&view, Qt::Key_F2);
        desk->typeLabel(text);
    }
    QString storedFolder() { return first.rows(u"Select Name From Tree Where ID = 1"_s).first(); }
    QString storedFormula() {
        return first.rows(u"Select Name From Formula Where ID = 1"_s).first();
    }
};

TEST_F(Rename, ANameIsStoredAsTypedOrRefusedWithAMessage) {
    const QString name = u" 'O''N'; \"%_ "_s;
    desk->openMenu(desk->tree(), u"梁"_s);
    desk->choose("mnuPopRename");
    desk->typeLabel(name);
    rename(desk->tree(), QString(41, u'夹'));
    EXPECT_EQ(told(), u"公式夹名称超过40个字符！"_s);
    EXPECT_TRUE(desk->tree().hasFocus());
    EXPECT_EQ(storedFolder(), name);
    EXPECT_EQ(desk->tree().selectedIndex().data(Qt::EditRole).toString(), name);
    desk->openMenu(desk->list(), u"弯曲"_s);
    desk->choose("mnuPopRename");
    desk->typeLabel(name);
    rename(desk->list(), u" "_s);
    EXPECT_EQ(told(), u"公式名称不能为空！"_s);
    EXPECT_TRUE(desk->list().hasFocus());
    EXPECT_EQ(desk->labelEditor(), nullptr);
    EXPECT_EQ(storedFormula(), name);
    EXPECT_EQ(desk->listTexts().first(), name);
    press(u"删除"_s, false);
    EXPECT_EQ(asked(), u"确实要删除公式-[%1]吗？"_s.arg(name));
}

TEST_F(Rename, ASecondClickOpensTheLabelOfAFolderOrFormulaButNotOneThatComesFromElsewhere) {
    QApplication::setDoubleClickInterval(50);
    const auto opens = [this](ui::NodeView& view, const QString& text) {
        desk->clickItem(view, Desk::find(view, text));
        QTest::qWait(80);
        return desk->labelEditor() != nullptr;
    };
    for (const auto& [text, isFolder] : {std::pair{u"库1"_s, false}, {u"梁"_s, true}}) {
        EXPECT_FALSE(opens(desk->tree(), text)) << "the first click selects";
        EXPECT_EQ(opens(desk->tree(), text), isFolder);
    }
    desk->typeLabel({}, Qt::Key_Escape);
    EXPECT_FALSE(opens(desk->list(), u"弯曲"_s)) << "the focus comes from elsewhere";
    EXPECT_TRUE(opens(desk->list(), u"弯曲"_s));
    const QModelIndex node = Desk::find(desk->tree(), u"梁"_s);
    const QPoint place = desk->tree().visualRect(node).center();
    desk->clickNode(u"梁"_s);
    QTest::qWait(80);
    QTest::mouseClick(desk->tree().viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(desk->tree().viewport(), Qt::LeftButton, {}, place);
    QTest::qWait(120);
    EXPECT_EQ(desk->labelEditor(), nullptr) << "a double click";
    EXPECT_FALSE(desk->tree().isExpanded(node));
}

TEST_F(Rename, TheEditorGrowsWithItsTextAsFarAsTheViewGoes) {
    select(u"梁"_s);
    QTest::keyClick(&desk->tree(), Qt::Key_F2);
    const QLineEdit& editor = *desk->labelEditor();
    const QRect room = desk->tree().viewport()->rect();
    const int labelLeft = editor.x();
    EXPECT_GT(labelLeft, desk->tree().visualRect(desk->tree().selectedIndex()).left());
    for (int length = 2; length <= 40; ++length) {
        desk->type(u"夹"_s);
        const int text = editor.fontMetrics().horizontalAdvance(editor.text());
        EXPECT_GT(editor.width(), std::min(text, room.width() - 1));
        EXPECT_TRUE(room.contains(editor.geometry()));
        EXPECT_TRUE(editor.x() == labelLeft || editor.geometry().right() == room.right());
    }
}

TEST_F(Rename, ALabelThatIsLeftIsStoredInItsOwnLibrary) {
    const auto leave = [this](const QString& node, const QString& typed) {
        desk->clickNode(node);
        QTest::keyClick(&desk->tree(), Qt::Key_F2);
        desk->labelEditor()->setText(typed);
        desk->control().ClickTreeNode(u"FormulaNode1->DBNode2"_s);
        settle();
    };
    leave(u"梁"_s, u"横梁"_s);
    EXPECT_EQ(storedFolder(), u"横梁"_s);
    EXPECT_EQ(outline(second), u"管(流量)"_s);
    leave(u"横梁"_s, {});
    EXPECT_EQ(told(), u"公式夹名称不能为空！"_s);
    EXPECT_EQ(selected(), u"横梁"_s) << "the user is not led away";
    QTest::keyClick(&desk->tree(), Qt::Key_F2);
    desk->labelEditor()->setText(u"主梁"_s);
    start();
    EXPECT_EQ(storedFolder(), u"主梁"_s) << "stored when the control goes";
}

}  // namespace
}  // namespace varo::test
