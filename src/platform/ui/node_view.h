#pragma once

#include <QBasicTimer>
#include <QKeySequence>
#include <QList>
#include <QTreeView>

namespace varo::ui {

/// A tree, or a list in report view, whose items are known by text keys: its model answers KeyRole.
/// Signals a click and a move by keyboard; a selection made by the program raises no signal. The
/// label of the selected item is edited in place, by a second click on it or by edit(); the model
/// decides which labels can be edited and what they may become.
class NodeView : public QTreeView {
    Q_OBJECT

  public:
    /// Roles under which a model answers.
    enum Role {
        KeyRole = Qt::UserRole,  ///< the item's key
        SelectedIconRole,        ///< the icon of the item while it is selected; optional
    };

    explicit NodeView(QWidget* parent = nullptr);

    /// Key of an item; "" for an invalid index.
    static QString keyOf(const QModelIndex& index) { return index.data(KeyRole).toString(); }

    /// Key of the selected item; "" when none is selected.
    QString selectedKey() const;

    /// The selected item; invalid when none is selected.
    QModelIndex selectedIndex() const;

    /// Selects an item and raises no signal; an invalid index deselects every item.
    void selectItem(const QModelIndex& index);

    /// Ends the editing of a label as Enter does. Returns false when the model refuses the text,
    /// which is then dropped.
    bool commitEdit();

    /// Keeps the first column as wide as the view, so that longer texts are cut and end in "…";
    /// only items far to the right, of which too little could be read, make it wider.
    void fitFirstColumn();

    /// Keys that raise commandKeyPressed() while the view, and not the editor of a label, has the
    /// focus; the shortcuts of windows around the view do not get them.
    void setCommandKeys(const QList<QKeySequence>& keys) { commandKeys_ = keys; }

  signals:
    /// The user clicked the item, or reached it with the keyboard.
    void nodeClicked(const QModelIndex& index);
    /// A button was pressed at a place; `index` is invalid on empty space.
    void pressedAt(const QModelIndex& index, Qt::MouseButton button);
    /// The left button was clicked on empty space.
    void emptyClicked();
    /// The user, not the program, opened an item's children.
    void nodeExpanded(const QModelIndex& index);
    void commandKeyPressed(const QKeySequence& key);
    /// The right button was released at a place on the screen, or the key for menus was pressed;
    /// `index` is invalid on empty space.
    void menuRequested(const QModelIndex& index, const QPoint& position);
    /// Files were dropped on the view, which takes them while it accepts drops. Raised when the
    /// drop is over.
    void filesDropped(const QStringList& files);

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void updateGeometries() override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void initViewItemOption(QStyleOptionViewItem* option) const override;
    void drawBranches(QPainter* painter, const QRect& rect,
                      const QModelIndex& index) const override;
    /// Only the program selects, through selectItem(): what is selected is what is shown.
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;

  private:
    QModelIndex itemAt(const QPoint& position) const;
    void fitColumn();
    bool isCommandKey(const QKeyEvent& event) const;

    QList<QKeySequence> commandKeys_;
    QPersistentModelIndex pressed_;
    bool pressedSelected_ = false;  ///< the pressed item was selected before
    bool comesByMouse_ = false;     ///< the press under way gave the view the focus
    QBasicTimer labelDelay_;        ///< runs between the second click on an item and its editor
    bool userActs_ = false;
    bool fitsColumn_ = false;
};

}  // namespace varo::ui
