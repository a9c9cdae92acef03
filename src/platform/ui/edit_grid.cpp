#include "platform/ui/edit_grid.h"

#include "platform/ui/edit_grid_delegate.h"
#include "platform/ui/twips.h"

#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>
#include <utility>

namespace varo::ui {

namespace {

constexpr int kColorRole = Qt::UserRole;
constexpr int kStyleRole = Qt::UserRole + 1;

constexpr int kCellPadding = 8;

bool isDropDown(EditStyle style) {
    return style == EditStyle::DropDown;
}

QColor toColor(quint32 color) {
    return QColor(color & 0xFF, (color >> 8) & 0xFF, (color >> 16) & 0xFF);
}

void setEditable(QTableWidgetItem* item, bool editable) {
    item->setFlags(item->flags().setFlag(Qt::ItemIsEditable, editable));
}

}  // namespace

EditGrid::EditGrid(QWidget* parent) : QTableWidget(parent) {
    setItemDelegate(new Delegate(this));
    setSelectionMode(SingleSelection);
    setEditTriggers(DoubleClicked | SelectedClicked | EditKeyPressed | AnyKeyPressed);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    fitRows();
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setMinimumSectionSize(0);
}

void EditGrid::changeEvent(QEvent* event) {
    QTableWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        fitRows();
    }
}

void EditGrid::fitRows() {
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kCellPadding);
}

int EditGrid::Cols() const {
    return columnCount();
}

void EditGrid::SetCols(int count) {
    discardEdit();
    setColumnCount(std::max(count, 0));
    columns_.resize(static_cast<size_t>(columnCount()));
    fillWithItems();
}

int EditGrid::Rows() const {
    return rowCount() + 1;
}

void EditGrid::SetRows(int count) {
    discardEdit();
    setRowCount(std::max(count, 1) - 1);
    fillWithItems();
}

/// Gives every cell an item, so that cell() is null only outside the grid.
void EditGrid::fillWithItems() {
    for (int column = 0; column < columnCount(); ++column) {
        if (!horizontalHeaderItem(column)) {
            setHorizontalHeaderItem(column, new QTableWidgetItem());
        }
        for (int row = rowCount() - 1; row >= 0 && !item(row, column); --row) {
            auto* fresh = new QTableWidgetItem();
            setEditable(fresh, columns_[static_cast<size_t>(column)].editable);
            setItem(row, column, fresh);
        }
    }
}

QTableWidgetItem* EditGrid::cell(int Row, int Col) const {
    return Row == 0 ? horizontalHeaderItem(Col) : item(Row - 1, Col);
}

void EditGrid::SetCellText(int Row, int Col, const QString& Text) {
    textSet_ = true;
    if (auto* found = cell(Row, Col)) {
        found->setText(Text);
    }
}

QString EditGrid::GetCellText(int Row, int Col) const {
    const auto* found = cell(Row, Col);
    return found ? found->text() : QString();
}

void EditGrid::SetColWidth(int Col, int Width) {
    if (Col >= 0 && Col < columnCount()) {
        setColumnWidth(Col, toPixels(std::max(Width, 0)));
    }
}

void EditGrid::SetColEditable(int Col, bool Editable) {
    if (Col < 0 || Col >= columnCount()) {
        return;
    }
    columns_[static_cast<size_t>(Col)].editable = Editable;
    for (int row = 0; row < rowCount(); ++row) {
        setEditable(item(row, Col), Editable);
    }
}

void EditGrid::SetCellForeColor(int Row, int Col, quint32 Color) {
    if (auto* found = cell(Row, Col)) {
        found->setData(kColorRole, Color);
        found->setData(Qt::ForegroundRole, Color == 0 ? QVariant() : QBrush(toColor(Color)));
    }
}

quint32 EditGrid::CellForeColor(int Row, int Col) const {
    const auto* found = cell(Row, Col);
    return found ? found->data(kColorRole).toUInt() : 0;
}

void EditGrid::SetCellNote(int Row, int Col, const QString& Text) {
    if (auto* found = cell(Row, Col)) {
        // The delegate draws the sign and shows the tool tip.
        found->setData(Qt::AccessibleDescriptionRole, Text.isEmpty() ? QVariant() : Text);
    }
}

QString EditGrid::CellNote(int Row, int Col) const {
    const auto* found = cell(Row, Col);
    return found ? found->data(Qt::AccessibleDescriptionRole).toString() : QString();
}

void EditGrid::SetColEditStyle(int Col, EditStyle Style) {
    if (Col >= 0 && Col < columnCount()) {
        columns_[static_cast<size_t>(Col)].style = Style;
        viewport()->update();
    }
}

void EditGrid::SetCellEditStyle(int Row, int Col, EditStyle Style) {
    if (auto* found = cell(Row, Col)) {
        found->setData(kStyleRole, static_cast<int>(Style));
    }
}

void EditGrid::SetCellSuggestions(int Row, int Col, const QStringList& Texts) {
    if (auto* found = cell(Row, Col)) {
        found->setData(Delegate::SuggestionsRole, Texts);
    }
}

EditStyle EditGrid::styleOf(const QModelIndex& index) const {
    const QVariant own = index.data(kStyleRole);
    return own.isValid() ? static_cast<EditStyle>(own.toInt())
                         : columns_[static_cast<size_t>(index.column())].style;
}

void EditGrid::AddListItem(const QString& Text) {
    listItems_.append(Text);
}

int EditGrid::GetListCount() const {
    return static_cast<int>(listItems_.size());
}

void EditGrid::RemoveListItem(int Index) {
    if (Index >= 0 && Index < listItems_.size()) {
        listItems_.removeAt(Index);
    }
}

bool EditGrid::offersChoices(const QModelIndex& index) const {
    switch (styleOf(index)) {
        case EditStyle::DropDown:
            return true;
        case EditStyle::Plain:
            return !listItems_.isEmpty() &&
                   std::ranges::none_of(columns_, isDropDown, &Column::style);
        case EditStyle::Button:
            return false;
    }
    return false;
}

bool EditGrid::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
    const bool wasEditing = state() == EditingState;
    if (trigger != SelectedClicked) {
        cancelDelayedEdit();
    }
    if (!QTableWidget::edit(index, trigger, event)) {
        return false;
    }
    if (!wasEditing && state() == EditingState) {
        edited_ = index;
        const bool byMouseDown = trigger == DoubleClicked;
        if (styleOf(index) == EditStyle::DropDown && trigger != AnyKeyPressed && !byMouseDown) {
            showChoices();
        }
    }
    return true;
}

/// A click on the selected cell makes the base class start a timer of the double-click interval,
/// at whose end it edits the cell, even when the grid has lost the focus; meanwhile it ignores
/// every other trigger. An edit for another trigger stops the timer.
void EditGrid::cancelDelayedEdit() {
    QTableWidget::edit(currentIndex(), CurrentChanged, nullptr);
}

void EditGrid::openChoices(const QModelIndex& index) {
    if (edit(index, AllEditTriggers, nullptr)) {
        showChoices();
    }
}

void EditGrid::showChoices() {
    if (auto* choice = qobject_cast<QComboBox*>(indexWidget(edited_))) {
        choice->showPopup();
    }
}

void EditGrid::discardEdit() {
    QWidget* editor = state() == EditingState ? indexWidget(edited_) : nullptr;
    if (editor) {
        QTableWidget::closeEditor(editor, QAbstractItemDelegate::RevertModelCache);
    }
}

void EditGrid::commitEdit() {
    QWidget* editor = state() == EditingState ? indexWidget(edited_) : nullptr;
    if (editor) {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
}

void EditGrid::commitData(QWidget* editor) {
    const QString before = edited_.data().toString();
    QTableWidget::commitData(editor);
    textChanged_ = textChanged_ || edited_.data().toString() != before;
}

void EditGrid::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    const bool forward = hint == QAbstractItemDelegate::SubmitModelCache ||
                         hint == QAbstractItemDelegate::EditNextItem;
    const bool backward = hint == QAbstractItemDelegate::EditPreviousItem;
    QTableWidget::closeEditor(editor, forward || backward ? QAbstractItemDelegate::NoHint : hint);

    const QPersistentModelIndex cell = edited_;
    const QModelIndex next = cell.sibling(cell.row() + (forward ? 1 : -1), cell.column());
    if ((forward || backward) && next.isValid() && currentIndex() == cell) {
        setCurrentIndex(next);
    }
    // Raised last: a handler may show a window or rebuild the grid, which would destroy an editor
    // that is still being closed.
    if (std::exchange(textChanged_, false) && cell.isValid()) {
        emit CellEdited(cell.row() + 1, cell.column(), cell.data().toString());
    }
}

void EditGrid::activate(const QModelIndex& index) {
    cancelDelayedEdit();
    if (styleOf(index) == EditStyle::Button) {
        emit CellButtonClick(index.row() + 1, index.column());
    } else {
        emit CellActivate(index.row() + 1, index.column());
    }
}

void EditGrid::focusOutEvent(QFocusEvent* event) {
    cancelDelayedEdit();
    QTableWidget::focusOutEvent(event);
}

void EditGrid::keyPressEvent(QKeyEvent* event) {
    const QModelIndex index = currentIndex();
    const bool altDown =
        event->key() == Qt::Key_Down && event->modifiers().testFlag(Qt::AltModifier);
    const bool isPick =
        altDown || (event->key() == Qt::Key_F4 && event->modifiers() == Qt::NoModifier);
    if (!index.isValid() || !isPick) {
        QTableWidget::keyPressEvent(event);
    } else if ((altDown || isDropDown(styleOf(index))) &&
               index.flags().testFlag(Qt::ItemIsEditable) && offersChoices(index)) {
        openChoices(index);
    } else {
        activate(index);
    }
}

QModelIndex EditGrid::buttonAt(const QPoint& position) const {
    const QModelIndex index = indexAt(position);
    const bool hit = index.isValid() && styleOf(index) == EditStyle::Button &&
                     Delegate::buttonRect(visualRect(index)).contains(position);
    return hit ? index : QModelIndex();
}

bool EditGrid::pressButton(const QMouseEvent& event) {
    const QModelIndex index = buttonAt(event.position().toPoint());
    if (event.button() != Qt::LeftButton || !index.isValid()) {
        return false;
    }
    setCurrentIndex(index);
    pressedButton_ = index;
    viewport()->update();
    return true;
}

void EditGrid::mousePressEvent(QMouseEvent* event) {
    if (!pressButton(*event)) {
        QTableWidget::mousePressEvent(event);
    }
}

void EditGrid::mouseReleaseEvent(QMouseEvent* event) {
    const QPersistentModelIndex pressed = std::exchange(pressedButton_, QPersistentModelIndex());
    if (pressed.isValid()) {
        viewport()->update();
        if (buttonAt(event->position().toPoint()) == pressed) {
            activate(pressed);
        }
        return;
    }
    QTableWidget::mouseReleaseEvent(event);
    // The drop-down of a double-clicked cell opens when the button is released; opened before, it
    // would take the release as a choice.
    if (state() == EditingState && styleOf(edited_) == EditStyle::DropDown) {
        showChoices();
    }
}

void EditGrid::mouseDoubleClickEvent(QMouseEvent* event) {
    if (pressButton(*event)) {
        return;
    }
    const QPersistentModelIndex index = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && index.isValid()) {
        cancelDelayedEdit();
        textSet_ = false;
        emit CellActivate(index.row() + 1, index.column());
        // In this order: a handler may have destroyed the grid, and so the index.
        if (!index.isValid() || textSet_) {
            return;
        }
    }
    QTableWidget::mouseDoubleClickEvent(event);
}

}  // namespace varo::ui
