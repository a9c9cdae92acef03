#include "platform/ui/edit_grid.h"

#include "platform/ui/ink.h"

#include <QComboBox>
#include <QDialog>
#include <QHelpEvent>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

/// A grid of names and values, a, b, c = 1, 2, 3, of which the values can be edited, in a window
/// above a line edit.
class EditGridTest : public testing::Test {
  protected:
    void SetUp() override {
        auto* layout = new QVBoxLayout(&window_);
        layout->addWidget(&grid_);
        layout->addWidget(&other_);
        grid_.SetCols(2);
        grid_.SetRows(4);
        grid_.SetCellText(0, 1, u"变量值"_s);
        grid_.SetColEditable(1, true);
        for (int row = 1; row <= 3; ++row) {
            grid_.SetCellText(row, 0, QString(QChar(u'a' + row - 1)));
            grid_.SetCellText(row, 1, QString::number(row));
        }
        window_.resize(400, 300);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
        grid_.setFocus();
    }

    QRect cell(int row, int column) { return grid_.visualItemRect(grid_.item(row - 1, column)); }

    void clickAt(QPoint place) { QTest::mouseClick(grid_.viewport(), Qt::LeftButton, {}, place); }

    void click(int row, int column) { clickAt(cell(row, column).center()); }

    void doubleClick(int row, int column) {
        const QPoint place = cell(row, column).center();
        clickAt(place);
        QTest::mouseDClick(grid_.viewport(), Qt::LeftButton, {}, place);
        QTest::mouseRelease(grid_.viewport(), Qt::LeftButton, {}, place);
    }

    /// The open editor; null when there is none.
    template <typename Editor = QWidget>
    Editor* editor() {
        for (auto* each : grid_.viewport()->findChildren<Editor*>(Qt::FindDirectChildrenOnly)) {
            if (each->isVisible()) {
                return each;
            }
        }
        return nullptr;
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        QCoreApplication::processEvents();
    }

    /// Types into whatever has the focus at each key, "\r" for Enter, then lets what was queued
    /// happen.
    void type(const char* text) {
        for (; *text != '\0'; ++text) {
            QTest::keyClick(QApplication::focusWidget(), *text);
        }
        QCoreApplication::processEvents();
    }

    void expectOneEdit(int row, int column, const QString& text) {
        SCOPED_TRACE(text.toStdString());
        ASSERT_EQ(edited_.size(), 1);
        EXPECT_EQ(edited_.takeFirst(), (QVariantList{row, column, text}));
        EXPECT_EQ(grid_.GetCellText(row, column), text);
    }

    QWidget window_;
    EditGrid grid_{&window_};
    QLineEdit other_{&window_};
    QSignalSpy edited_{&grid_, &EditGrid::CellEdited};
    QSignalSpy activated_{&grid_, &EditGrid::CellActivate};
    QSignalSpy pressed_{&grid_, &EditGrid::CellButtonClick};
};

TEST_F(EditGridTest, RowZeroIsTheHeaderAndCallsOutsideTheGridDoNothing) {
    EXPECT_EQ(grid_.horizontalHeaderItem(1)->text(), u"变量值");
    for (const auto& [row, column] : {std::pair{4, 0}, {-1, 0}, {1, 2}, {1, -1}, {0, 2}}) {
        grid_.SetCellText(row, column, u"x"_s);
        grid_.SetCellForeColor(row, column, 0xFF);
        grid_.SetCellEditStyle(row, column, EditStyle::Button);
        grid_.SetCellNote(row, column, u"x"_s);
        EXPECT_EQ(grid_.GetCellText(row, column), u"");
        EXPECT_EQ(grid_.CellForeColor(row, column), 0u);
    }
    grid_.SetColWidth(7, 100);
    grid_.SetColEditable(-1, true);
    grid_.SetColEditStyle(2, EditStyle::DropDown);
    grid_.RemoveListItem(0);
    grid_.SetRows(0);
    EXPECT_EQ(grid_.Rows(), 1);
    EXPECT_EQ(grid_.GetCellText(0, 1), u"变量值");
}

TEST_F(EditGridTest, TypingReplacesTheTextAndEnterGoesToTheNextRow) {
    const std::tuple<int, const char*, QString, int> edits[] = {
        {1, "12.5\r", u"12.5"_s, 2}, {2, "7\t", u"7"_s, 3}, {3, "9\r", u"9"_s, 3}};
    for (const auto& [row, keys, text, next] : edits) {
        click(row, 1);
        type(keys);
        EXPECT_FALSE(editor());
        expectOneEdit(row, 1, text);
        EXPECT_EQ(grid_.currentRow() + 1, next);
    }
    type("8");
    EXPECT_EQ(grid_.GetCellText(3, 1), u"9") << "until it is stored";
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    expectOneEdit(3, 1, u"8"_s);
    EXPECT_EQ(grid_.currentRow(), 1);
    type("\t");
    EXPECT_TRUE(other_.hasFocus());
}

TEST_F(EditGridTest, LeavingTheCellStoresTheTextButEscapeAndTheSameTextAreNoEdit) {
    click(1, 1);
    type("99\x1b");
    EXPECT_FALSE(editor());
    EXPECT_EQ(grid_.GetCellText(1, 1), u"1");
    type("1\r");
    EXPECT_EQ(edited_.size(), 0);
    click(1, 1);
    type("5");
    QMetaObject::invokeMethod(&grid_, "commitData", Q_ARG(QWidget*, editor()));  // once more below
    other_.setFocus();
    expectOneEdit(1, 1, u"5"_s);
    click(2, 1);
    type("6");
    click(1, 1);
    expectOneEdit(2, 1, u"6"_s);
    EXPECT_EQ(grid_.currentRow(), 0);
}

TEST_F(EditGridTest, F2AndAClickOnTheSelectedCellEditTheTextThatIsThere) {
    click(1, 1);
    press(Qt::Key_F2);
    ASSERT_TRUE(editor<QLineEdit>());
    EXPECT_EQ(editor<QLineEdit>()->selectedText(), u"1");
    press(Qt::Key_End);
    type("0\r");
    expectOneEdit(1, 1, u"10"_s);
    click(2, 1);
    type("42\r");
    expectOneEdit(2, 1, u"42"_s);
    click(3, 1);
    EXPECT_TRUE(QTest::qWaitFor([this] { return editor() != nullptr; }, 2000));
    press(Qt::Key_Escape);
    click(3, 1);
    other_.setFocus();
    QTest::qWait(QApplication::doubleClickInterval() + 100);
    EXPECT_FALSE(editor()) << "the focus has gone meanwhile";
    EXPECT_TRUE(other_.hasFocus());
}

TEST_F(EditGridTest, WhatIsNotEditableOrDisabledStaysAsItIs) {
    doubleClick(1, 0);
    type("x");
    press(Qt::Key_F2);
    EXPECT_FALSE(editor());
    activated_.clear();
    grid_.setEnabled(false);
    doubleClick(1, 1);
    EXPECT_FALSE(editor());
    EXPECT_EQ(activated_.size(), 0);
}

TEST_F(EditGridTest, RebuildingDiscardsTheOpenEdit) {
    for (const int rows : {4, 2}) {
        click(3, 1);
        type("99");
        ASSERT_TRUE(editor());
        grid_.SetRows(rows);
        EXPECT_FALSE(editor());
        QCoreApplication::processEvents();
        other_.setFocus();
        grid_.SetRows(4);
        EXPECT_EQ(edited_.size(), 0);
        EXPECT_EQ(grid_.GetCellText(3, 1), rows == 2 ? u""_s : u"3"_s);
        grid_.setFocus();
    }
}

TEST_F(EditGridTest, AHandlerMayRebuildTheGridAndShowAWindow) {
    QObject::connect(&grid_, &EditGrid::CellEdited, &grid_, [this](int row, int column) {
        QDialog question(&window_);
        QTimer::singleShot(0, &question, &QDialog::reject);
        question.exec();
        grid_.SetCellText(row, column, u"0"_s);
        grid_.SetRows(1);
    });
    click(3, 1);
    type("99\r");
    EXPECT_EQ(edited_.size(), 1);
    EXPECT_EQ(grid_.Rows(), 1);
    EXPECT_FALSE(editor());
}

TEST_F(EditGridTest, DoubleClickActivatesAndEditsUnlessTheHandlerPicksAValueOrRemovesTheRow) {
    doubleClick(2, 1);
    ASSERT_EQ(activated_.size(), 1);
    EXPECT_EQ(activated_.constFirst(), (QVariantList{2, 1}));
    EXPECT_TRUE(editor());
    press(Qt::Key_Escape);
    press(Qt::Key_F4);
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(activated_.size(), 3);
    EXPECT_FALSE(editor());
    QObject::connect(&grid_, &EditGrid::CellActivate, &grid_, [this](int row, int) {
        row == 1 ? grid_.SetCellText(row, 1, u"1"_s) : grid_.SetRows(1);
    });
    for (const int row : {1, 2}) {
        doubleClick(row, 1);
        EXPECT_FALSE(editor());
    }
    EXPECT_EQ(edited_.size(), 0);
}

TEST_F(EditGridTest, ItemsAreOfferedBesideFreeTyping) {
    grid_.AddListItem(u"10"_s);
    grid_.AddListItem(u"20"_s);
    click(1, 1);
    type("2");
    ASSERT_TRUE(editor<QComboBox>());
    type("1\r");
    expectOneEdit(1, 1, u"21"_s);
    press(Qt::Key_Down, Qt::AltModifier);
    auto* choice = editor<QComboBox>();
    ASSERT_TRUE(choice);
    ASSERT_TRUE(choice->view()->isVisible());
    choice->view()->setCurrentIndex(choice->model()->index(1, 0));
    QTest::keyClick(choice->view(), Qt::Key_Return);
    QCoreApplication::processEvents();
    expectOneEdit(2, 1, u"20"_s);
    EXPECT_FALSE(editor());
    grid_.RemoveListItem(0);
    grid_.RemoveListItem(0);
    press(Qt::Key_F2);
    EXPECT_TRUE(editor<QLineEdit>());
    EXPECT_EQ(activated_.size(), 0);
}

TEST_F(EditGridTest, ADropDownColumnOffersOnlyItsItems) {
    grid_.SetColEditStyle(1, EditStyle::DropDown);
    grid_.AddListItem(u"无"_s);
    grid_.AddListItem(u"属性"_s);
    click(1, 1);
    press(Qt::Key_F2);
    ASSERT_TRUE(editor<QComboBox>());
    other_.setFocus();
    EXPECT_EQ(grid_.GetCellText(1, 1), u"1") << "a text that is no item";
    doubleClick(1, 1);
    auto* choice = editor<QComboBox>();
    ASSERT_TRUE(choice && choice->view()->isVisible());
    EXPECT_FALSE(choice->isEditable());
    const QRect place = choice->view()->visualRect(choice->model()->index(1, 0));
    // The list ignores the mouse for a moment, in case its button is still down.
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    QTest::mouseMove(choice->view()->viewport(), place.center());
    QTest::mouseClick(choice->view()->viewport(), Qt::LeftButton, {}, place.center());
    QCoreApplication::processEvents();
    expectOneEdit(1, 1, u"属性"_s);
    EXPECT_FALSE(editor());
    press(Qt::Key_F4);
    EXPECT_TRUE(editor<QComboBox>());
    press(Qt::Key_Escape);
    grid_.SetColEditable(0, true);
    doubleClick(2, 0);
    EXPECT_TRUE(editor<QLineEdit>()) << "its items are offered nowhere else";
}

TEST_F(EditGridTest, AButtonCellHasAButtonBesideItsText) {
    grid_.SetCellEditStyle(2, 1, EditStyle::Button);
    const QPoint button(cell(2, 1).right() - 4, cell(2, 1).center().y());
    clickAt(button);
    ASSERT_EQ(pressed_.size(), 1);
    EXPECT_EQ(pressed_.constFirst(), (QVariantList{2, 1}));
    QTest::mousePress(grid_.viewport(), Qt::LeftButton, {}, button);
    QTest::mouseRelease(grid_.viewport(), Qt::LeftButton, {}, cell(1, 1).center());
    EXPECT_EQ(pressed_.size(), 1);
    press(Qt::Key_F4);
    EXPECT_EQ(pressed_.size(), 2);
    EXPECT_EQ(activated_.size(), 0);
    type("t");
    ASSERT_TRUE(editor<QLineEdit>());
    EXPECT_LT(editor<QLineEdit>()->width(), grid_.columnWidth(1) - 10);
    press(Qt::Key_Return);
    expectOneEdit(2, 1, u"t"_s);
    grid_.SetCellEditStyle(2, 1, EditStyle::Plain);
    clickAt(button);
    EXPECT_EQ(pressed_.size(), 2);
}

TEST_F(EditGridTest, ColoursAndNotesCanBeSeenOnEveryBackground) {
    grid_.SetCellText(1, 0, u"■■■■"_s);
    for (const QPalette& palette : lightAndDark()) {
        grid_.setPalette(palette);
        const auto ink = [&](int column) {
            const QRect inside = cell(1, column).adjusted(2, 0, -2, 0);
            const QRect middle(inside.left(), inside.center().y(), inside.width(), 1);
            return inkOf(grid_.viewport()->grab(middle).toImage(), palette.color(QPalette::Base));
        };
        grid_.SetCellForeColor(1, 0, 0xFF0000U);
        EXPECT_GT(ink(0).contrast, 70);
        EXPECT_GT(ink(0).blueness, 100);
        grid_.SetCellForeColor(1, 0, 0x0000FFU);
        EXPECT_GT(ink(0).contrast, 70);
        EXPECT_GT(ink(0).redness, 100);
        EXPECT_EQ(grid_.CellForeColor(1, 0), 0x0000FFU);
        EXPECT_LT(ink(1).redness, 40);
        grid_.SetCellNote(1, 1, u"无法读取"_s);
        EXPECT_GT(ink(1).redness, 150) << "the sign";
        grid_.SetCellNote(1, 1, QString());
        EXPECT_LT(ink(1).redness, 40);
    }
}

TEST_F(EditGridTest, TheToolTipHoldsTheNoteAndATextThatIsCut) {
    const auto toolTipOf = [this](int row, int column) {
        const QPoint place = cell(row, column).center();
        QHelpEvent event(QEvent::ToolTip, place, grid_.viewport()->mapToGlobal(place));
        QApplication::sendEvent(grid_.viewport(), &event);
        return QToolTip::text();
    };
    const QString text = u"<b>"_s + QString(200, u'x');
    grid_.SetCellText(1, 0, text);
    EXPECT_TRUE(toolTipOf(1, 0).contains(text.toHtmlEscaped()));
    grid_.SetCellNote(2, 1, u"读<取"_s);
    EXPECT_TRUE(toolTipOf(2, 1).contains(u"读&lt;取\n2"_s));
    EXPECT_EQ(grid_.CellNote(2, 1), u"读<取"_s);
    click(2, 1);
    type("7\r");
    EXPECT_EQ(grid_.CellNote(2, 1), u"读<取"_s) << "whatever text the cell gets";
    grid_.SetRows(2);
    grid_.SetRows(4);
    EXPECT_EQ(grid_.CellNote(2, 1), QString());
}

}  // namespace
}  // namespace varo::ui
