#pragma once

#include <QPersistentModelIndex>
#include <QStringList>
#include <QTableWidget>

#include <vector>

namespace varo::ui {

/// How a cell is edited.
enum class EditStyle { Plain = 0, DropDown = 2, Button = 3 };

/// A grid whose row 0 is its header row and whose cells the user may edit column by column. Rows
/// and columns count from 0; calls with a row or column outside the grid do nothing. Colours are
/// 0x00BBGGRR; black stands for the palette's text colour, and a colour that cannot be read on the
/// palette's base colour is shown lighter or darker.
///
/// The user edits a cell by typing, F2, a double click, or a click on the cell that is selected
/// already. Enter, Tab, and leaving the cell store the text, the first two going on to the next
/// row; Esc discards it. What the program changes raises no signal.
class EditGrid : public QTableWidget {
    Q_OBJECT

  public:
    explicit EditGrid(QWidget* parent = nullptr);

    int Cols() const;
    void SetCols(int count);
    /// Number of rows, the header row included; at least 1.
    int Rows() const;
    /// Rows that stay keep their cells, new rows are empty. An edit in progress is discarded.
    void SetRows(int count);

    void SetCellText(int Row, int Col, const QString& Text);
    /// Text of a cell; "" outside the grid. While a cell is being edited this is its last stored
    /// text.
    QString GetCellText(int Row, int Col) const;
    /// Width in twips (1/1440 inch); negative widths count as 0.
    void SetColWidth(int Col, int Width);
    void SetColEditable(int Col, bool Editable);
    void SetCellForeColor(int Row, int Col, quint32 Color);
    quint32 CellForeColor(int Row, int Col) const;
    /// Marks a cell below the header row with a sign before its text and gives it `Text` as its
    /// tool tip, above the cell's own text; "" takes the mark away. The note stays with the cell
    /// until the cell's row is removed, whatever text the cell gets.
    void SetCellNote(int Row, int Col, const QString& Text);
    /// The note of a cell; "" when it has none.
    QString CellNote(int Row, int Col) const;
    void SetColEditStyle(int Col, EditStyle Style);
    /// Overrides the column's style for this cell, until the cell's row is removed.
    void SetCellEditStyle(int Row, int Col, EditStyle Style);
    /// While a cell in which any text can be typed is edited, those of `Texts` that contain what
    /// has been typed are offered, letter case ignored. They stay until the cell's row is removed.
    void SetCellSuggestions(int Row, int Col, const QStringList& Texts);

    /// Ends an edit as Enter would, raising CellEdited if the text has changed.
    void commitEdit();

    /// The grid's drop-down items: the only choices in a DropDown column; in a grid without such a
    /// column, offered beside free typing while a Plain cell is edited.
    void AddListItem(const QString& Text);
    int GetListCount() const;
    void RemoveListItem(int Index);

  signals:
    /// The user has changed a cell; `Text` is the new text, already shown in the cell. Not raised
    /// when the text is the same as before. Raised when no editor is open any more, so that the
    /// handler may rebuild the grid or show a window.
    void CellEdited(int Row, int Col, const QString& Text);
    /// The user asks to pick a value for a cell: a double click, F4, or, where a cell offers no
    /// drop-down items, Alt+Down; both keys open the list of a DropDown cell. After a double click
    /// editing starts unless the handler has set the text of a cell, be it to the same text.
    void CellActivate(int Row, int Col);
    /// The button of a Button cell was pressed, by the mouse, F4 or Alt+Down.
    void CellButtonClick(int Row, int Col);

  protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void commitData(QWidget* editor) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    void changeEvent(QEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

  private:
    class Delegate;

    struct Column {
        bool editable = false;
        EditStyle style = EditStyle::Plain;
    };

    QTableWidgetItem* cell(int Row, int Col) const;
    void fillWithItems();
    void fitRows();
    EditStyle styleOf(const QModelIndex& index) const;
    bool offersChoices(const QModelIndex& index) const;
    /// The Button cell whose button is at the position; invalid when there is none.
    QModelIndex buttonAt(const QPoint& position) const;
    bool pressButton(const QMouseEvent& event);
    void openChoices(const QModelIndex& index);
    void showChoices();
    void activate(const QModelIndex& index);
    void discardEdit();
    void cancelDelayedEdit();

    std::vector<Column> columns_;
    QStringList listItems_;
    QPersistentModelIndex edited_;
    QPersistentModelIndex pressedButton_;
    bool textChanged_ = false;
    bool textSet_ = false;  ///< SetCellText() has been called since the last activation
};

}  // namespace varo::ui
