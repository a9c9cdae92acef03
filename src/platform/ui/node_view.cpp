#include "platform/ui/node_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>

namespace varo::ui {

namespace {

/// Draws a selected item with the picture that its model gives for that state.
class NodeDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        if (option->state.testFlag(QStyle::State_Selected)) {
            const auto icon = index.data(NodeView::SelectedIconRole).value<QIcon>();
            if (!icon.isNull()) {
                option->icon = icon;
            }
        }
    }
};

}  // namespace

NodeView::NodeView(QWidget* parent) : QTreeView(parent) {
    setItemDelegate(new NodeDelegate(this));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setUniformRowHeights(true);
    setContextMenuPolicy(Qt::NoContextMenu);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        if (userActs_) {
            emit nodeExpanded(index);
        }
    });
}

QString NodeView::selectedKey() const {
    const auto* selection = selectionModel();
    if (selection == nullptr || !selection->hasSelection()) {
        return {};
    }
    return selection->selectedIndexes().constFirst().data(KeyRole).toString();
}

void NodeView::selectItem(const QModelIndex& index) {
    if (!index.isValid()) {
        selectionModel()->clear();
        return;
    }
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
}

QModelIndex NodeView::itemAt(const QPoint& position) const {
    const QModelIndex index = indexAt(position);
    // The plus or minus sign beside an item only opens and closes it.
    return visualRect(index).contains(position) ? index : QModelIndex();
}

void NodeView::mousePressEvent(QMouseEvent* event) {
    const QScopedValueRollback acting(userActs_, true);
    pressed_ = itemAt(event->position().toPoint());
    emit pressedAt(pressed_, event->button());
    QTreeView::mousePressEvent(event);
}

void NodeView::mouseReleaseEvent(QMouseEvent* event) {
    {
        const QScopedValueRollback acting(userActs_, true);
        QTreeView::mouseReleaseEvent(event);
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const QPoint position = event->position().toPoint();
    const QModelIndex index = itemAt(position);
    if (index.isValid() && pressed_ == index) {
        emit nodeClicked(index);
    } else if (!pressed_.isValid() && !indexAt(position).isValid()) {
        emit emptyClicked();
    }
}

void NodeView::mouseDoubleClickEvent(QMouseEvent* event) {
    const QScopedValueRollback acting(userActs_, true);
    QTreeView::mouseDoubleClickEvent(event);
}

void NodeView::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const {
    if (rootIsDecorated()) {
        const auto hasNext = [](const QModelIndex& node) {
            return node.sibling(node.row() + 1, 0).isValid();
        };
        const int middle = rect.center().y();
        // Room for the sign that opens and closes the node.
        const int gap = model()->hasChildren(index) ? 5 : 0;
        int x = rect.right() - indentation() / 2;
        painter->save();
        painter->setPen(QPen(palette().color(QPalette::Mid), 1, Qt::DotLine));
        if (index.parent().isValid() || index.row() > 0) {
            painter->drawLine(x, rect.top(), x, middle - gap);
        }
        if (hasNext(index)) {
            painter->drawLine(x, middle + gap, x, rect.bottom());
        }
        painter->drawLine(x + gap, middle, rect.right(), middle);
        for (QModelIndex above = index.parent(); above.isValid(); above = above.parent()) {
            x -= indentation();
            if (hasNext(above)) {
                painter->drawLine(x, rect.top(), x, rect.bottom());
            }
        }
        painter->restore();
    }
    QTreeView::drawBranches(painter, rect, index);
}

QItemSelectionModel::SelectionFlags NodeView::selectionCommand(const QModelIndex&,
                                                               const QEvent*) const {
    return QItemSelectionModel::NoUpdate;
}

void NodeView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete && state() != QAbstractItemView::EditingState) {
        emit deletePressed();
        return;
    }
    const bool chooses = event->key() == Qt::Key_Space || event->key() == Qt::Key_Return ||
                         event->key() == Qt::Key_Enter;
    const QPersistentModelIndex before = currentIndex();
    {
        const QScopedValueRollback acting(userActs_, true);
        QTreeView::keyPressEvent(event);
    }
    const QModelIndex after = currentIndex();
    const bool moved = after != before;
    if (after.isValid() && (moved || (chooses && !selectionModel()->isSelected(after)))) {
        emit nodeClicked(after);
    }
}

}  // namespace varo::ui
