#include "editing/beam_desk.h"

#include <QApplication>
#include <QTest>

namespace varo::test {
namespace {

class Rename : public BeamDesk {
  protected:
    /// Opens the label of the selected item of `view` and types; what is stored afterwards.
    void rename(ui::NodeView& view, const QString& text) {
        view.setFocus();
        QTest::keyClick(&view, Qt::Key_F2);
        desk.typeLabel(text);
    }
    QString storedFolder() {
        return first.rows(QStringLiteral("Select Name From Tree Where ID = %1").arg(beams)).first();
    }
    QString storedFormula() {
        return first.rows(QStringLiteral("Select Name From Formula Where ID = %1").arg(bending))
            .first();
    }
};

TEST_F(Rename, NamesAreCheckedAndStoredAsTyped) {
    const QString ofForty(40, u'夹');
    const QString ofTwenty(20, u'式');
    struct {
        QString typed;
        QString message;  ///< of a refusal
    } const folders[] = {
        {QStringLiteral("大梁"), {}},
        {QStringLiteral(" 'O''Neil'; \"%_ "), {}},
        {ofForty, {}},
        {ofForty + u'夹', QStringLiteral("公式夹名称超过40个字符！")},
        {QString(39, u'a') + QStringLiteral("  "), QStringLiteral("公式夹名称超过40个字符！")},
        {QString(), QStringLiteral("公式夹名称不能为空！")},
        {QStringLiteral("   "), QStringLiteral("公式夹名称不能为空！")},
        {QString(41, u' '), QStringLiteral("公式夹名称不能为空！")},
    };
    desk.clickNode(QStringLiteral("梁"));
    for (const auto& each : folders) {
        const QString before = storedFolder();
        desk.questions().informed.clear();
        rename(desk.tree(), each.typed);
        const bool refused = !each.message.isEmpty();
        EXPECT_EQ(desk.messages(), refused ? QStringList{each.message} : QStringList{});
        EXPECT_EQ(storedFolder(), refused ? before : each.typed);
        EXPECT_EQ(desk.tree().selectedIndex().data(Qt::EditRole).toString(), storedFolder());
        EXPECT_TRUE(desk.tree().hasFocus());
        EXPECT_EQ(desk.labelEditor(), nullptr);
    }
    struct {
        QString typed;
        QString message;
    } const formulas[] = {
        {QStringLiteral("弯'曲"), {}},
        {ofTwenty, {}},
        {ofTwenty + u'式', QStringLiteral("公式名称超过20个字符！")},
        {QStringLiteral(" "), QStringLiteral("公式名称不能为空！")},
    };
    desk.clickFormula(QStringLiteral("弯曲"));
    for (const auto& each : formulas) {
        const QString before = storedFormula();
        desk.questions().informed.clear();
        rename(desk.list(), each.typed);
        const bool refused = !each.message.isEmpty();
        EXPECT_EQ(desk.messages(), refused ? QStringList{each.message} : QStringList{});
        EXPECT_EQ(storedFormula(), refused ? before : each.typed);
        EXPECT_EQ(desk.listTexts().first(), storedFormula());
        EXPECT_TRUE(desk.list().hasFocus());
    }
    desk.questions().answers = {false};
    desk.clickEditButton(QStringLiteral("删除"));
    EXPECT_EQ(desk.questions().asked.last(),
              QStringLiteral("确实要删除公式-[%1]吗？").arg(ofTwenty));
}

TEST_F(Rename, ASecondClickOpensTheLabelButNotTheOneThatComesFromElsewhere) {
    const auto clickAndWait = [this] {
        desk.clickFormula(QStringLiteral("弯曲"));
        QTest::qWait(QApplication::doubleClickInterval() + 100);
        return desk.labelEditor() != nullptr;
    };
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_FALSE(clickAndWait());
    EXPECT_TRUE(clickAndWait());
    desk.typeLabel({}, Qt::Key_Escape);
    desk.formulaBox().setFocus();
    EXPECT_FALSE(clickAndWait());
}

TEST_F(Rename, TheEditorGrowsWithItsTextAsFarAsTheViewGoes) {
    for (const auto& [view, label] : {std::pair{&desk.tree(), QStringLiteral("悬臂")},
                                      {&desk.list(), QStringLiteral("弯曲")}}) {
        desk.clickNode(QStringLiteral("梁"));
        view == &desk.tree() ? desk.clickNode(label) : desk.clickFormula(label);
        view->setFocus();
        QTest::keyClick(view, Qt::Key_F2);
        QLineEdit& editor = *desk.labelEditor();
        const int room = view->viewport()->width();
        const int labelLeft = editor.x();
        EXPECT_GT(labelLeft, view->visualRect(view->selectedIndex()).left()) << "the picture stays";
        for (int length = 1; length <= 40; ++length) {
            editor.setText(QString(length, u'夹'));
            const int text = editor.fontMetrics().horizontalAdvance(editor.text());
            EXPECT_GT(editor.width(), std::min(text, room - 1));
            EXPECT_TRUE(view->viewport()->rect().contains(editor.geometry()));
            EXPECT_TRUE(editor.x() == labelLeft || editor.geometry().right() == room - 1);
        }
        QTest::keyClick(&editor, Qt::Key_Escape);
        settle();
    }
}

TEST_F(Rename, TheMenuOpensTheLabelAndEscapeKeepsIt) {
    desk.openMenu(desk.tree(), QStringLiteral("简支"));
    desk.choose("mnuPopRename");
    desk.typeLabel(QStringLiteral("x"), Qt::Key_Escape);
    desk.clickNode(QStringLiteral("梁"));
    desk.openMenu(desk.list(), QStringLiteral("剪切"));
    desk.choose("mnuPopRename");
    desk.typeLabel(QStringLiteral("切"));
    EXPECT_EQ(desk.listTexts().at(1), QStringLiteral("切"));
}

TEST_F(Rename, ASecondClickOpensTheLabelOfAFolderButNotOfALibrary) {
    QApplication::setDoubleClickInterval(50);
    for (const auto& [text, opens] :
         {std::pair{QStringLiteral("简支"), true}, std::pair{QStringLiteral("库1"), false}}) {
        desk.clickNode(text);
        QTest::qWait(80);
        EXPECT_EQ(desk.labelEditor(), nullptr) << "the first click selects";
        desk.clickNode(text);
        QTest::qWait(80);
        EXPECT_EQ(desk.labelEditor() != nullptr, opens) << text.toStdString();
    }
    QTest::keyClick(&desk.tree(), Qt::Key_F2);
    EXPECT_EQ(desk.labelEditor(), nullptr);
}

TEST_F(Rename, ADoubleClickOpensAndClosesAndEditsNoLabel) {
    QApplication::setDoubleClickInterval(50);
    desk.clickNode(QStringLiteral("梁"));
    QTest::qWait(80);
    const QModelIndex node = Desk::find(desk.tree(), QStringLiteral("梁"));
    const QPoint place = desk.tree().visualRect(node).center();
    QTest::mouseClick(desk.tree().viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(desk.tree().viewport(), Qt::LeftButton, {}, place);
    QTest::qWait(120);
    EXPECT_EQ(desk.labelEditor(), nullptr);
    EXPECT_FALSE(desk.tree().isExpanded(node));
}

TEST_F(Rename, ALabelThatIsLeftIsStoredInItsOwnLibrary) {
    desk.clickNode(QStringLiteral("梁"));
    QTest::keyClick(&desk.tree(), Qt::Key_F2);
    desk.labelEditor()->setText(QStringLiteral("横梁"));
    desk.control().ClickTreeNode(QStringLiteral("FormulaNode1->DBNode2"));
    EXPECT_EQ(storedFolder(), QStringLiteral("横梁"));
    EXPECT_EQ(second.rows(QStringLiteral("Select Name From Tree")),
              QStringList{QStringLiteral("管")});
    desk.clickNode(QStringLiteral("横梁"));
    QTest::keyClick(&desk.tree(), Qt::Key_F2);
    desk.labelEditor()->setText(QString());
    desk.control().ClickTreeNode(QStringLiteral("FormulaNode1->DBNode2"));
    settle();
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("公式夹名称不能为空！")});
    EXPECT_EQ(desk.tree().selectedKey(), folder(beams)) << "the user is not led away";
}

TEST_F(Rename, ALabelThatIsOpenIsStoredWhenTheControlGoes) {
    {
        Desk other(configuration.folder());
        other.clickNode(QStringLiteral("简支"));
        QTest::keyClick(&other.tree(), Qt::Key_F2);
        other.labelEditor()->setText(QStringLiteral("简支梁"));
    }
    EXPECT_TRUE(
        first.rows(QStringLiteral("Select Name From Tree")).contains(QStringLiteral("简支梁")));
    desk.clickNode(QStringLiteral("简支"));
    desk.clickEditButton(QStringLiteral("下移"));
}

}  // namespace
}  // namespace varo::test
