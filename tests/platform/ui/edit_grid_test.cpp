#include "platform/ui/edit_grid.h"

#include "platform/ui/twips.h"

#include <QComboBox>
#include <QDialog>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

constexpr quint32 Red = 0x0000FF;
constexpr quint32 Blue = 0xFF0000;

/// A grid of names and values, a, b, c = 1, 2, 3, of which the values can be edited, in a window
/// beside a line edit.
class EditGridTest : public testing::Test {
  protected:
    void SetUp() override {
        auto* layout = new QVBoxLayout(&window_);
        grid_ = new EditGrid();
        other_ = new QLineEdit();
        layout->addWidget(grid_);
        layout->addWidget(other_);
        fillGrid();
        edited_ = std::make_unique<QSignalSpy>(grid_, &EditGrid::CellEdited);
        activated_ = std::make_unique<QSignalSpy>(grid_, &EditGrid::CellActivate);
        pressed_ = std::make_unique<QSignalSpy>(grid_, &EditGrid::CellButtonClick);
        window_.resize(400, 300);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
        grid_->setFocus();
    }

    void fillGrid() {
        grid_->SetCols(2);
        grid_->SetRows(4);
        grid_->SetCellText(0, 0, u"变量名称"_s);
        grid_->SetCellText(0, 1, u"变量值"_s);
        grid_->SetColEditable(1, true);
        for (int row = 1; row <= 3; ++row) {
            grid_->SetCellText(row, 0, QString(QChar(u'a' + row - 1)));
            grid_->SetCellText(row, 1, QString::number(row));
        }
    }

    /// Middle of a cell, on the grid's viewport.
    QPoint at(int row, int column) const {
        return grid_->visualItemRect(grid_->item(row - 1, column)).center();
    }

    void click(int row, int column) {
        QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {}, at(row, column));
    }

    void doubleClick(int row, int column) {
        QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {}, at(row, column));
        QTest::mouseDClick(grid_->viewport(), Qt::LeftButton, {}, at(row, column));
        QTest::mouseRelease(grid_->viewport(), Qt::LeftButton, {}, at(row, column));
    }

    /// The open editor; null when there is none.
    template <typename Editor>
    Editor* editor() const {
        const auto found = grid_->viewport()->findChildren<Editor*>(Qt::FindDirectChildrenOnly);
        for (Editor* each : found) {
            if (each->isVisible()) {
                return each;
            }
        }
        return nullptr;
    }

    bool isEditing() const { return editor<QLineEdit>() || editor<QComboBox>(); }

    /// Types into whatever has the focus at each key, then lets what was queued happen.
    void type(const QString& text) {
        for (const QChar c : text) {
            QTest::keyClick(QApplication::focusWidget(), c.toLatin1());
        }
        QCoreApplication::processEvents();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        QCoreApplication::processEvents();
    }

    void expectOneEdit(int row, int column, const QString& text) {
        SCOPED_TRACE(text.toStdString());
        ASSERT_EQ(edited_->size(), 1);
        EXPECT_EQ(edited_->constFirst(), (QVariantList{row, column, text}));
        EXPECT_EQ(grid_->GetCellText(row, column), text);
        edited_->clear();
    }

    QWidget window_;
    EditGrid* grid_ = nullptr;
    QLineEdit* other_ = nullptr;
    std::unique_ptr<QSignalSpy> edited_;
    std::unique_ptr<QSignalSpy> activated_;
    std::unique_ptr<QSignalSpy> pressed_;
};

TEST_F(EditGridTest, RowZeroIsTheHeader) {
    EXPECT_EQ(grid_->Rows(), 4);
    EXPECT_EQ(grid_->Cols(), 2);
    EXPECT_EQ(grid_->GetCellText(0, 1), u"变量值");
    EXPECT_EQ(grid_->horizontalHeaderItem(1)->text(), u"变量值");
    EXPECT_EQ(grid_->item(0, 0)->text(), u"a");
    grid_->SetRows(0);
    EXPECT_EQ(grid_->Rows(), 1);
    EXPECT_EQ(grid_->GetCellText(0, 1), u"变量值");
}

TEST_F(EditGridTest, CallsOutsideTheGridDoNothing) {
    for (const auto& [row, column] : {std::pair{4, 0}, {-1, 0}, {1, 2}, {1, -1}, {0, 2}}) {
        grid_->SetCellText(row, column, u"x"_s);
        grid_->SetCellForeColor(row, column, Red);
        grid_->SetCellEditStyle(row, column, EditStyle::Button);
        EXPECT_EQ(grid_->GetCellText(row, column), u"");
        EXPECT_EQ(grid_->CellForeColor(row, column), 0u);
    }
    grid_->SetColWidth(7, 100);
    grid_->SetColEditable(-1, true);
    grid_->SetColEditStyle(2, EditStyle::DropDown);
    grid_->RemoveListItem(0);
    EXPECT_EQ(grid_->Rows(), 4);
    EXPECT_EQ(grid_->Cols(), 2);
}

TEST_F(EditGridTest, TakesWidthsInTwips) {
    grid_->SetColWidth(0, 900);
    EXPECT_EQ(grid_->columnWidth(0), 60);
    EXPECT_EQ(toTwips(grid_->columnWidth(0)), 900);
    grid_->SetColWidth(0, -5);
    EXPECT_EQ(grid_->columnWidth(0), 0);
}

TEST_F(EditGridTest, ColoursNamesAndLeavesBlackToThePalette) {
    grid_->SetCellForeColor(1, 0, Blue);
    grid_->SetCellForeColor(2, 0, Red);
    EXPECT_EQ(grid_->item(0, 0)->foreground().color(), QColor(Qt::blue));
    EXPECT_EQ(grid_->item(1, 0)->foreground().color(), QColor(Qt::red));
    EXPECT_EQ(grid_->CellForeColor(1, 0), Blue);
    grid_->SetCellForeColor(1, 0, 0);
    EXPECT_EQ(grid_->item(0, 0)->foreground().style(), Qt::NoBrush);
    EXPECT_EQ(grid_->CellForeColor(1, 0), 0u);
}

TEST_F(EditGridTest, TypingReplacesTheTextAndEnterGoesToTheNextRow) {
    click(1, 1);
    type(u"12.5"_s);
    ASSERT_TRUE(isEditing());
    EXPECT_EQ(grid_->GetCellText(1, 1), u"1");
    press(Qt::Key_Return);
    EXPECT_FALSE(isEditing());
    expectOneEdit(1, 1, u"12.5"_s);
    EXPECT_EQ(grid_->currentRow(), 1);
    EXPECT_TRUE(grid_->hasFocus());
    type(u"7"_s);
    press(Qt::Key_Tab);
    expectOneEdit(2, 1, u"7"_s);
    EXPECT_EQ(grid_->currentRow(), 2);
    type(u"8"_s);
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    expectOneEdit(3, 1, u"8"_s);
    EXPECT_EQ(grid_->currentRow(), 1);
}

TEST_F(EditGridTest, EnterInTheLastRowStaysThere) {
    click(3, 1);
    type(u"9"_s);
    press(Qt::Key_Enter);
    expectOneEdit(3, 1, u"9"_s);
    EXPECT_EQ(grid_->currentRow(), 2);
}

TEST_F(EditGridTest, EscapeGivesTheEditUp) {
    click(1, 1);
    type(u"99"_s);
    press(Qt::Key_Escape);
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(edited_->size(), 0);
    EXPECT_EQ(grid_->GetCellText(1, 1), u"1");
}

TEST_F(EditGridTest, LeavingTheCellStoresTheText) {
    click(1, 1);
    type(u"5"_s);
    other_->setFocus();
    expectOneEdit(1, 1, u"5"_s);

    click(2, 1);
    type(u"6"_s);
    click(1, 1);
    expectOneEdit(2, 1, u"6"_s);
    EXPECT_EQ(grid_->currentRow(), 0);
}

TEST_F(EditGridTest, TheSameTextIsNoEdit) {
    click(1, 1);
    type(u"1"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(edited_->size(), 0);
}

TEST_F(EditGridTest, F2AndAClickOnTheSelectedCellEditTheTextThatIsThere) {
    click(1, 1);
    press(Qt::Key_F2);
    ASSERT_TRUE(editor<QLineEdit>());
    EXPECT_EQ(editor<QLineEdit>()->selectedText(), u"1");
    press(Qt::Key_End);
    type(u"0"_s);
    press(Qt::Key_Return);
    expectOneEdit(1, 1, u"10"_s);

    click(2, 1);
    EXPECT_TRUE(QTest::qWaitFor([this] { return isEditing(); }, 2000));
}

TEST_F(EditGridTest, AClickOnTheSelectedCellDoesNotEditOnceTheFocusHasGone) {
    click(1, 1);
    click(1, 1);
    other_->setFocus();
    QTest::qWait(QApplication::doubleClickInterval() + 100);
    EXPECT_FALSE(isEditing());
    EXPECT_TRUE(other_->hasFocus());
}

TEST_F(EditGridTest, TypingRightAfterAClickOnTheSelectedCellLosesNoKey) {
    click(1, 1);
    click(1, 1);
    type(u"42"_s);
    press(Qt::Key_Return);
    expectOneEdit(1, 1, u"42"_s);
}

TEST_F(EditGridTest, AColumnThatIsNotEditableStaysAsItIs) {
    doubleClick(1, 0);
    type(u"x"_s);
    press(Qt::Key_F2);
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(grid_->GetCellText(1, 0), u"a");
    grid_->SetColEditable(1, false);
    click(1, 1);
    type(u"x"_s);
    EXPECT_FALSE(isEditing());
}

TEST_F(EditGridTest, ADisabledGridTakesNoInput) {
    click(1, 1);
    grid_->setEnabled(false);
    doubleClick(1, 1);
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(activated_->size(), 0);
}

TEST_F(EditGridTest, WhatTheProgramWritesIsNoEdit) {
    grid_->SetCellText(1, 1, u"5"_s);
    grid_->SetRows(2);
    grid_->SetRows(4);
    EXPECT_EQ(edited_->size(), 0);
    EXPECT_EQ(grid_->GetCellText(1, 1), u"5");
    EXPECT_EQ(grid_->GetCellText(3, 1), u"");
}

TEST_F(EditGridTest, RowsThatComeAreEditableLikeTheOthers) {
    grid_->SetRows(6);
    click(5, 1);
    type(u"4"_s);
    press(Qt::Key_Return);
    expectOneEdit(5, 1, u"4"_s);
}

TEST_F(EditGridTest, RebuildingGivesUpTheOpenEdit) {
    for (const int rows : {4, 2}) {
        click(3, 1);
        type(u"99"_s);
        ASSERT_TRUE(isEditing());
        grid_->SetRows(rows);
        EXPECT_FALSE(isEditing());
        QCoreApplication::processEvents();
        other_->setFocus();
        grid_->SetRows(4);
        EXPECT_EQ(edited_->size(), 0);
        EXPECT_EQ(grid_->GetCellText(1, 1), u"1");
        EXPECT_EQ(grid_->GetCellText(3, 1), rows == 2 ? u""_s : u"3"_s);
        grid_->setFocus();
    }
}

TEST_F(EditGridTest, AHandlerMayRebuildTheGridAndShowAWindow) {
    QObject::connect(grid_, &EditGrid::CellEdited, grid_, [this](int row, int column) {
        QDialog question(&window_);
        QTimer::singleShot(0, &question, &QDialog::reject);
        question.exec();
        grid_->SetCellText(row, column, u"0"_s);
        grid_->SetRows(1);
    });
    click(3, 1);
    type(u"99"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(edited_->size(), 1);
    EXPECT_EQ(grid_->Rows(), 1);
    EXPECT_FALSE(isEditing());
}

TEST_F(EditGridTest, EnterInAnEditorDoesNotPressTheDialogsDefaultButton) {
    QDialog dialog;
    QVBoxLayout layout(&dialog);
    layout.addWidget(grid_);
    auto* ok = new QPushButton(&dialog);
    ok->setDefault(true);
    layout.addWidget(ok);
    QSignalSpy clicked(ok, &QPushButton::clicked);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    click(1, 1);
    type(u"5"_s);
    press(Qt::Key_Return);
    expectOneEdit(1, 1, u"5"_s);
    EXPECT_EQ(clicked.size(), 0);
    window_.layout()->addWidget(grid_);
}

TEST_F(EditGridTest, DoubleClickActivatesAndThenEdits) {
    doubleClick(2, 1);
    ASSERT_EQ(activated_->size(), 1);
    EXPECT_EQ(activated_->constFirst(), (QVariantList{2, 1}));
    EXPECT_TRUE(isEditing());
}

TEST_F(EditGridTest, DoubleClickDoesNotEditWhenTheHandlerHasPickedAValue) {
    QObject::connect(grid_, &EditGrid::CellActivate, grid_,
                     [this](int row, int) { grid_->SetCellText(row, 1, u"picked"_s); });
    doubleClick(2, 1);
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(grid_->GetCellText(2, 1), u"picked");
    EXPECT_EQ(edited_->size(), 0);
}

TEST_F(EditGridTest, DoubleClickOutlivesAHandlerThatRemovesTheRow) {
    QObject::connect(grid_, &EditGrid::CellActivate, grid_, [this] { grid_->SetRows(1); });
    doubleClick(2, 1);
    EXPECT_FALSE(isEditing());
}

TEST_F(EditGridTest, F4AndAltDownActivate) {
    click(2, 1);
    press(Qt::Key_F4);
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(activated_->size(), 2);
    EXPECT_EQ(activated_->constLast(), (QVariantList{2, 1}));
    EXPECT_FALSE(isEditing());
}

TEST_F(EditGridTest, ItemsAreOfferedBesideFreeTyping) {
    grid_->AddListItem(u"10"_s);
    grid_->AddListItem(u"20"_s);
    EXPECT_EQ(grid_->GetListCount(), 2);
    click(1, 1);
    type(u"2"_s);
    auto* choice = editor<QComboBox>();
    ASSERT_TRUE(choice);
    EXPECT_TRUE(choice->isEditable());
    EXPECT_EQ(choice->currentText(), u"2");
    type(u"1"_s);
    press(Qt::Key_Return);
    expectOneEdit(1, 1, u"21"_s);
    EXPECT_EQ(grid_->currentRow(), 1);

    type(u"20"_s);
    press(Qt::Key_Return);
    expectOneEdit(2, 1, u"20"_s);
    EXPECT_EQ(grid_->currentRow(), 2);

    grid_->RemoveListItem(0);
    grid_->RemoveListItem(0);
    EXPECT_EQ(grid_->GetListCount(), 0);
    press(Qt::Key_F2);
    EXPECT_TRUE(editor<QLineEdit>());
}

TEST_F(EditGridTest, AltDownOpensTheItemsAndChoosingOneIsAnEdit) {
    grid_->AddListItem(u"10"_s);
    grid_->AddListItem(u"20"_s);
    click(1, 1);
    press(Qt::Key_Down, Qt::AltModifier);
    auto* choice = editor<QComboBox>();
    ASSERT_TRUE(choice);
    ASSERT_TRUE(choice->view()->isVisible());
    choice->view()->setCurrentIndex(choice->model()->index(1, 0));
    QTest::keyClick(choice->view(), Qt::Key_Return);
    QCoreApplication::processEvents();
    expectOneEdit(1, 1, u"20"_s);
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(activated_->size(), 0);
}

TEST_F(EditGridTest, ADropDownColumnOffersOnlyItsItems) {
    grid_->SetColEditStyle(1, EditStyle::DropDown);
    for (const auto* item : {u"无", u"属性", u"数据表"}) {
        grid_->AddListItem(QString::fromUtf16(item));
    }
    grid_->SetCellText(1, 1, u"无"_s);
    doubleClick(1, 1);
    auto* choice = editor<QComboBox>();
    ASSERT_TRUE(choice);
    EXPECT_FALSE(choice->isEditable());
    ASSERT_TRUE(choice->view()->isVisible());
    const QRect place = choice->view()->visualRect(choice->model()->index(2, 0));
    // The list ignores the mouse for a moment, in case it was opened by the button still being
    // down.
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    QTest::mouseMove(choice->view()->viewport(), place.center());
    QTest::mouseClick(choice->view()->viewport(), Qt::LeftButton, {}, place.center());
    QCoreApplication::processEvents();
    expectOneEdit(1, 1, u"数据表"_s);
    EXPECT_FALSE(isEditing());
}

TEST_F(EditGridTest, ADropDownCellKeepsATextThatIsNoItem) {
    grid_->SetColEditStyle(1, EditStyle::DropDown);
    grid_->AddListItem(u"无"_s);
    click(1, 1);
    press(Qt::Key_F2);
    ASSERT_TRUE(editor<QComboBox>());
    other_->setFocus();
    EXPECT_EQ(grid_->GetCellText(1, 1), u"1");
    EXPECT_EQ(edited_->size(), 0);
}

TEST_F(EditGridTest, TheButtonOfAButtonCellIsClicked) {
    grid_->SetCellEditStyle(2, 1, EditStyle::Button);
    const QRect cell = grid_->visualItemRect(grid_->item(1, 1));
    const QPoint button(cell.right() - 4, cell.center().y());
    QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {}, button);
    ASSERT_EQ(pressed_->size(), 1);
    EXPECT_EQ(pressed_->constFirst(), (QVariantList{2, 1}));
    EXPECT_EQ(grid_->currentRow(), 1);

    QTest::mousePress(grid_->viewport(), Qt::LeftButton, {}, button);
    QTest::mouseRelease(grid_->viewport(), Qt::LeftButton, {}, at(1, 1));
    EXPECT_EQ(pressed_->size(), 1);

    press(Qt::Key_F4);
    EXPECT_EQ(pressed_->size(), 2);
    EXPECT_EQ(activated_->size(), 0);

    grid_->SetCellEditStyle(2, 1, EditStyle::Plain);
    QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {}, button);
    EXPECT_EQ(pressed_->size(), 2);
}

TEST_F(EditGridTest, TheTextOfAButtonCellCanBeEditedBesideTheButton) {
    grid_->SetCellEditStyle(2, 1, EditStyle::Button);
    click(2, 1);
    type(u"db.mdb->t"_s);
    ASSERT_TRUE(editor<QLineEdit>());
    EXPECT_LT(editor<QLineEdit>()->width(), grid_->columnWidth(1) - 10);
    press(Qt::Key_Return);
    expectOneEdit(2, 1, u"db.mdb->t"_s);
}

TEST_F(EditGridTest, ATextThatIsCutShowsWholeInATooltip) {
    const QString text = u"<b>"_s + QString(200, u'x');
    grid_->SetCellText(1, 0, text);
    const auto hover = [this](int row, int column) {
        QHelpEvent event(QEvent::ToolTip, at(row, column),
                         grid_->viewport()->mapToGlobal(at(row, column)));
        QApplication::sendEvent(grid_->viewport(), &event);
    };
    hover(1, 0);
    EXPECT_TRUE(QToolTip::isVisible());
    EXPECT_TRUE(QToolTip::text().contains(text.toHtmlEscaped()));
    hover(1, 1);
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }, 2000));
}

TEST_F(EditGridTest, TabLeavesAGridThatIsNotBeingEdited) {
    click(1, 1);
    press(Qt::Key_Tab);
    EXPECT_TRUE(other_->hasFocus());
}

}  // namespace
}  // namespace varo::ui
