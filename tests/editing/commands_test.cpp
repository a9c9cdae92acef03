#include "support/beam_desk.h"

#include <QApplication>

namespace varo::test {
namespace {

class Commands : public BeamDesk {
  protected:
    void key(QWidget& on, Qt::Key pressed, Qt::KeyboardModifiers with = {}) {
        on.setFocus();
        QTest::keyClick(&on, pressed, with);
        settle();
    }
    QString shownFormula() { return desk->formulaBox().text(); }
    QStringList formulas(TestLibrary& of, qint32 folder) {
        return of.rows(
            u"Select Name, Formula From Formula Where PID = %1 Order By OrderID"_s.arg(folder));
    }
};

TEST_F(Commands, ANewFolderComesLastIsSelectedAndOpensItsLabel) {
    select(u"梁"_s);
    press(u"新建公式夹"_s);
    EXPECT_EQ(outline(first, beams), u"简支(挠度) 悬臂() 新建公式夹()"_s);
    EXPECT_EQ(selected(), u"新建公式夹"_s);
    EXPECT_TRUE(desk->listTexts().isEmpty());
    EXPECT_TRUE(showsWhatIsStored(*desk));
    ASSERT_NE(desk->labelEditor(), nullptr);
    EXPECT_EQ(desk->labelEditor()->selectedText(), u"新建公式夹"_s);
    desk->typeLabel(u"拱"_s);
    EXPECT_EQ(outline(first, beams), u"简支(挠度) 悬臂() 拱()"_s);
    desk->openMenu(desk->tree(), u"库2"_s);
    desk->choose("mnuPopNewFolder");
    desk->typeLabel(u"拱"_s, Qt::Key_Escape);
    EXPECT_EQ(outline(second), u"管(流量) 新建公式夹()"_s);
    EXPECT_EQ(desk->labelEditor(), nullptr);
}

TEST_F(Commands, ANodeThatIsOpenedIsSelectedWithoutListingAndListedByTheNextCommand) {
    select(u"梁"_s);
    const QModelIndex other = Desk::find(desk->tree(), u"库2"_s);
    desk->tree().collapse(other);
    const QRect rect = desk->tree().visualRect(other);
    desk->click(*desk->tree().viewport(), Qt::LeftButton, {rect.left() - 7, rect.center().y()});
    EXPECT_TRUE(desk->tree().isExpanded(other));
    ASSERT_EQ(desk->tree().selectedKey(), u"DBNode2"_s);
    EXPECT_EQ(desk->listTexts().size(), 3);
    press(u"新建公式夹"_s);
    EXPECT_EQ(outline(second), u"管(流量) 新建公式夹()"_s);
}

TEST_F(Commands, ANewFormulaComesLastIsShownAndOpensItsLabel) {
    select(u"梁"_s);
    desk->type(desk->formulaBox(), u"2*"_s);
    const QString typed = shownFormula();
    press(u"新建公式"_s);
    EXPECT_EQ(formulas(first, beams).first(), u"弯曲|"_s + typed) << "stored before the command";
    EXPECT_EQ(formulas(first, beams).last(), u"新建公式|"_s);
    EXPECT_EQ(desk->list().selectedIndex().row(), 3);
    EXPECT_TRUE(desk->labelEditor()->hasFocus());
    EXPECT_TRUE(desk->isEnabled("txtFormula"));
    EXPECT_TRUE(showsWhatIsStored(*desk));
    desk->labelEditor()->setText(u"压弯"_s);
    press(u"上移"_s);
    EXPECT_EQ(desk->listTexts().at(2), u"压弯"_s);
    desk->type(desk->formulaBox(), u"N/A"_s);
    desk->list().setFocus();
    EXPECT_EQ(formulas(first, beams).at(2), u"压弯|N/A"_s);
    select(u"库2"_s);
    desk->clickEmptySpace(desk->list(), Qt::RightButton);
    desk->choose("mnuPopNewFormula");
    desk->typeLabel(u"总"_s);
    EXPECT_EQ(formulas(second, 0), QStringList{u"总|"_s});
}

TEST_F(Commands, ADeletionIsConfirmedAndSelectsWhatIsLeft) {
    const QStringList before = first.content();
    select(u"梁"_s);
    press(u"删除"_s, false);
    desk->clickFormula(u"剪切"_s);
    press(u"删除"_s, false);
    EXPECT_EQ(asked(), u"确实要删除公式夹-[梁]吗？|确实要删除公式-[剪切]吗？"_s);
    EXPECT_EQ(first.content(), before);
    desk->questions().answers = {true};
    desk->openMenu(desk->list(), u"剪切"_s);
    desk->choose("mnuPopDel");
    EXPECT_EQ(shownFormula(), u"M/W"_s);
    press(u"删除"_s);
    EXPECT_EQ(shownFormula(), u"T/W"_s);
    desk->questions().answers = {true};
    key(desk->list(), Qt::Key_Delete);
    EXPECT_TRUE(desk->listTexts().isEmpty());
    EXPECT_TRUE(shownFormula().isEmpty());
    EXPECT_FALSE(desk->isEnabled("txtFormula"));
    EXPECT_FALSE(desk->editButton(u"删除"_s).isEnabled());
    EXPECT_TRUE(desk->editButton(u"新建公式"_s).isEnabled());
    select(u"梁"_s);
    press(u"删除"_s);
    EXPECT_EQ(selected(), u"库1"_s);
    EXPECT_EQ(outline(first), u"柱(稳定) 板()"_s);
    EXPECT_EQ(told(), QString());
}

TEST_F(Commands, MovingExchangesNeighboursAndKeepsWhatIsOpen) {
    select(u"梁"_s);
    press(u"下移"_s);
    EXPECT_EQ(outline(first), u"柱(稳定) 梁(弯曲,剪切,扭转)[简支(挠度) 悬臂()] 板()"_s);
    EXPECT_EQ(selected(), u"梁"_s);
    EXPECT_TRUE(desk->tree().isExpanded(Desk::find(desk->tree(), u"梁"_s)));
    desk->clickFormula(u"剪切"_s);
    press(u"上移"_s);
    EXPECT_EQ(shownFormula(), u"3*Q/(2*b*h)"_s);
    EXPECT_FALSE(desk->editButton(u"上移"_s).isEnabled());
    EXPECT_EQ(desk->listTexts().first(), u"剪切"_s);
    // A single folder or formula is offered the way down, and stays.
    const QStringList before = second.content();
    for (const QString& formula : {QString(), u"流量"_s}) {
        select(u"管"_s, formula);
        press(u"下移"_s);
    }
    EXPECT_EQ(second.content(), before);
    EXPECT_EQ(told(), QString());
}

TEST_F(Commands, AFolderIsPastedWithItsSubfoldersIfTheUserWants) {
    QList<Qt::CursorShape> shapes;
    QObject::connect(desk->tree().model(), &QAbstractItemModel::rowsInserted, desk.get(), [&] {
        const QCursor* cursor = QApplication::overrideCursor();
        shapes.append(cursor != nullptr ? cursor->shape() : Qt::ArrowCursor);
    });
    const QString top = u"梁(弯曲,剪切,扭转)"_s;
    const QString whole = top + u"[简支(挠度) 悬臂()]"_s;
    select(u"梁"_s);
    press(u"复制"_s);
    select(u"库2"_s);
    press(u"粘贴"_s, true);
    select(u"管"_s);
    press(u"粘贴"_s, false);
    EXPECT_EQ(asked(), u"复制子公式夹吗？|复制子公式夹吗？"_s);
    EXPECT_EQ(outline(second), u"管(流量)[%1] %2"_s.arg(top, whole));
    EXPECT_EQ(selected(), u"管"_s);
    EXPECT_TRUE(showsWhatIsStored(*desk));
    EXPECT_FALSE(shapes.isEmpty());
    EXPECT_EQ(shapes.count(Qt::WaitCursor), shapes.size());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    select(u"柱"_s);
    press(u"复制"_s);
    desk->openMenu(desk->tree(), u"板"_s);
    desk->choose("mnuPopPaste");
    EXPECT_EQ(asked(), QString()) << "there are none";
    EXPECT_EQ(outline(first, plates), u"柱(稳定)"_s);
}

TEST_F(Commands, KeysActOnTheSelectedItemOfTreeAndListAndNotInTextBoxes) {
    const auto type = [&](QWidget& on) {
        key(on, Qt::Key_C, Qt::ControlModifier);
        key(on, Qt::Key_V, Qt::ControlModifier);
    };
    select(u"柱"_s);
    type(desk->tree());
    EXPECT_EQ(outline(first, columns), u"柱(稳定)"_s);
    select(u"梁"_s, u"剪切"_s);
    EXPECT_FALSE(desk->editButton(u"粘贴"_s).isEnabled()) << "a folder has been copied";
    key(desk->list(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(desk->listTexts().size(), 3);
    type(desk->list());
    EXPECT_EQ(desk->listTexts().join(u' '), u"弯曲 剪切 扭转 剪切"_s);
    EXPECT_EQ(desk->list().selectedIndex().row(), 3);
    EXPECT_EQ(shownFormula(), u"3*Q/(2*b*h)"_s);
    const QStringList before = first.content();
    desk->formulaBox().selectAll();
    type(desk->formulaBox());
    key(desk->formulaBox(), Qt::Key_F2);
    EXPECT_EQ(desk->labelEditor(), nullptr);
    key(desk->list(), Qt::Key_F2);
    type(*desk->labelEditor());
    key(*desk->labelEditor(), Qt::Key_Delete);
    desk->typeLabel({}, Qt::Key_Escape);
    EXPECT_EQ(first.content(), before);
    desk->clickEmptySpace(desk->list());
    key(desk->list(), Qt::Key_Delete);
    key(desk->list(), Qt::Key_F2);
    EXPECT_EQ(desk->labelEditor(), nullptr);
    EXPECT_EQ(asked(), QString()) << "no formula is selected";
    select(u"梁"_s, u"弯曲"_s);
    key(desk->tree(), Qt::Key_Delete);
    EXPECT_EQ(asked(), u"确实要删除公式夹-[梁]吗？"_s) << "the tree speaks of its node";
    key(desk->tree(), Qt::Key_F2);
    desk->typeLabel(u"大梁"_s);
    EXPECT_EQ(selected(), u"大梁"_s);
}

/// As in a library that does not remember the identifiers of what was deleted.
TEST_F(Commands, AFolderMayGetTheIdentifierOfOneThatAnotherProgramHasDeleted) {
    requireSqlite();
    const auto deleteElsewhere = [&] {
        first.connection().execute(u"Delete From Tree Where ID >= ?"_s, {cantilever});
        first.connection().execute(u"Delete From sqlite_sequence"_s);
    };
    deleteElsewhere();
    select(u"柱"_s);
    press(u"新建公式夹"_s);
    desk->typeLabel(u"新"_s);
    EXPECT_EQ(desk->tree().selectedKey(), folder(cantilever));
    EXPECT_TRUE(showsWhatIsStored(*desk));
    press(u"复制"_s);
    press(u"粘贴"_s);
    select(u"梁"_s);
    press(u"复制"_s);
    deleteElsewhere();
    select(u"板"_s);
    press(u"粘贴"_s);
    EXPECT_EQ(told(), QString());
}

}  // namespace
}  // namespace varo::test
