#pragma once

#include <QTreeView>

namespace varo::ui {

/// A tree, or a list in report view, whose items are known by text keys: its model answers KeyRole.
/// Tells a click and a move by keyboard, which select, from a selection made by the program, which
/// does not.
class NodeView : public QTreeView {
    Q_OBJECT

  public:
    /// Role under which a model gives an item's key.
    static constexpr int KeyRole = Qt::UserRole;
    /// Role under which a model gives the picture of an item while it is selected; optional.
    static constexpr int SelectedIconRole = Qt::UserRole + 1;

    explicit NodeView(QWidget* parent = nullptr);

    /// Key of the selected item; "" when none is selected.
    QString selectedKey() const;

    /// Selects an item without telling; an invalid index deselects every item.
    void selectItem(const QModelIndex& index);

  signals:
    /// The user clicked the item, or reached it with the keyboard.
    void nodeClicked(const QModelIndex& index);
    /// A button was pressed at a place; `index` is invalid on empty space.
    void pressedAt(const QModelIndex& index, Qt::MouseButton button);
    /// The left button was clicked on empty space.
    void emptyClicked();
    /// The user, not the program, opened an item's children.
    void nodeExpanded(const QModelIndex& index);
    void deletePressed();

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void drawBranches(QPainter* painter, const QRect& rect,
                      const QModelIndex& index) const override;
    /// Only the program selects, through selectItem(): what is selected is what is shown.
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;

  private:
    QModelIndex itemAt(const QPoint& position) const;

    QPersistentModelIndex pressed_;
    bool userActs_ = false;
};

}  // namespace varo::ui
