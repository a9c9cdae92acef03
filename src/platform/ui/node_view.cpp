#include "platform/ui/node_view.h"

#include "platform/ui/action_keys.h"
#include "platform/ui/colors.h"
#include "platform/ui/dropped_files.h"
#include "platform/ui/icons.h"
#include "platform/ui/label_delegate.h"
#include "platform/ui/label_editor.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>

namespace varo::ui {

namespace {

/// Draws a selected item with the icon that its model has for that state, and creates the editor
/// of a label.
class NodeDelegate : public LabelDelegate {
  public:
    using LabelDelegate::LabelDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                          const QModelIndex&) const override {
        return opened(new LabelEditor(parent));
    }

    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override {
        QStyleOptionViewItem item = option;
        initStyleOption(&item, index);
        const QStyle& style = *item.widget->style();
        const QRect label = style.subElementRect(QStyle::SE_ItemViewItemText, &item, item.widget);
        const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &item, item.widget) + 1;
        static_cast<LabelEditor*>(editor)->setLabel(option.rect, label.left() + margin);
    }

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        LabelDelegate::initStyleOption(option, index);
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
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setIconSize(iconSizeFor(*this));
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        if (userActs_) {
            emit nodeExpanded(index);
        }
    });
}

QModelIndex NodeView::selectedIndex() const {
    const auto* selection = selectionModel();
    if (selection == nullptr || !selection->hasSelection()) {
        return {};
    }
    return selection->selectedIndexes().constFirst();
}

QString NodeView::selectedKey() const {
    return keyOf(selectedIndex());
}

bool NodeView::commitEdit() {
    labelDelay_.stop();
    return state() != EditingState || static_cast<LabelDelegate&>(*itemDelegate()).commitEdit();
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
    // The area of the plus or minus sign is not part of the item.
    return visualRect(index).contains(position) ? index : QModelIndex();
}

void NodeView::mousePressEvent(QMouseEvent* event) {
    const QScopedValueRollback acting(userActs_, true);
    labelDelay_.stop();
    pressed_ = itemAt(event->position().toPoint());
    // A click that brings the user to the view is not yet one on a label.
    pressedSelected_ = pressed_.isValid() && pressed_ == selectedIndex() && !comesByMouse_;
    comesByMouse_ = false;
    emit pressedAt(pressed_, event->button());
    QTreeView::mousePressEvent(event);
}

void NodeView::mouseReleaseEvent(QMouseEvent* event) {
    {
        const QScopedValueRollback acting(userActs_, true);
        QTreeView::mouseReleaseEvent(event);
    }
    const QPoint position = event->position().toPoint();
    const QModelIndex index = itemAt(position);
    if (event->button() == Qt::RightButton) {
        emit menuRequested(index, event->globalPosition().toPoint());
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (index.isValid() && pressed_ == index) {
        emit nodeClicked(index);
        if (pressedSelected_ && pressed_.flags().testFlag(Qt::ItemIsEditable)) {
            labelDelay_.start(QApplication::doubleClickInterval(), this);
        }
    } else if (!pressed_.isValid() && !indexAt(position).isValid()) {
        emit emptyClicked();
    }
}

void NodeView::fitFirstColumn() {
    fitsColumn_ = true;
    header()->setStretchLastSection(false);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &NodeView::fitColumn);
    fitColumn();
}

void NodeView::updateGeometries() {
    QTreeView::updateGeometries();
    fitColumn();
}

void NodeView::fitColumn() {
    if (!fitsColumn_ || header()->count() == 0) {
        return;
    }
    constexpr int kReadableCharacters = 12;
    const int readable =
        kReadableCharacters * fontMetrics().averageCharWidth() + iconSize().width();
    // The height does not depend on the horizontal bar, which the width decides on: the bar would
    // come and go for ever.
    const int height = maximumViewportSize().height();
    int width = viewport()->width();
    QModelIndex index = indexAt({0, 0});
    for (int top = 0; index.isValid() && top < height; index = indexBelow(index)) {
        top += rowHeight(index);
        int indent = indentation();
        for (QModelIndex above = index.parent(); above.isValid(); above = above.parent()) {
            indent += indentation();
        }
        const int text = fontMetrics().horizontalAdvance(index.data().toString());
        width = std::max(width, indent + std::min(readable, text + iconSize().width()));
    }
    // Resizing calls back until nothing changes any more.
    if (header()->sectionSize(0) != width) {
        header()->resizeSection(0, width);
    }
}

void NodeView::focusInEvent(QFocusEvent* event) {
    comesByMouse_ = event->reason() == Qt::MouseFocusReason;
    QTreeView::focusInEvent(event);
}

void NodeView::focusOutEvent(QFocusEvent* event) {
    labelDelay_.stop();
    QTreeView::focusOutEvent(event);
}

void NodeView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != labelDelay_.timerId()) {
        QTreeView::timerEvent(event);
        return;
    }
    labelDelay_.stop();
    if (pressed_.isValid() && pressed_ == selectedIndex()) {
        edit(pressed_);
    }
}

void NodeView::mouseDoubleClickEvent(QMouseEvent* event) {
    labelDelay_.stop();
    pressedSelected_ = false;
    const QScopedValueRollback acting(userActs_, true);
    QTreeView::mouseDoubleClickEvent(event);
}

void NodeView::changeEvent(QEvent* event) {
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        setIconSize(iconSizeFor(*this));
    }
}

void NodeView::initViewItemOption(QStyleOptionViewItem* option) const {
    QTreeView::initViewItemOption(option);
    if (!hasFocus() && state() != EditingState) {
        // Paler than in the view that has the keyboard focus.
        QPalette& colors = option->palette;
        colors.setColor(QPalette::Highlight,
                        mixed(colors.color(QPalette::Base), colors.color(QPalette::Highlight), 35));
        colors.setColor(QPalette::HighlightedText, colors.color(QPalette::Text));
    }
}

void NodeView::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const {
    if (rootIsDecorated()) {
        const auto hasNext = [](const QModelIndex& node) {
            return node.sibling(node.row() + 1, 0).isValid();
        };
        const int middle = rect.center().y();
        // The plus or minus sign is drawn here.
        const int gap = model()->hasChildren(index) ? 5 : 0;
        int x = rect.right() - indentation() / 2;
        painter->save();
        painter->setPen(
            QPen(mixed(palette().color(QPalette::Base), palette().color(QPalette::Text), 35), 1,
                 Qt::DotLine));
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

void NodeView::contextMenuEvent(QContextMenuEvent* event) {
    // With the mouse, the release of the button opens the menu.
    if (event->reason() == QContextMenuEvent::Keyboard) {
        const QModelIndex index = selectedIndex();
        if (index.isValid()) {
            scrollTo(index);
        }
        const QRect place = visualRect(index) & viewport()->rect();
        emit menuRequested(index, viewport()->mapToGlobal(place.bottomLeft()));
    }
    event->accept();
}

void NodeView::dragEnterEvent(QDragEnterEvent* event) {
    dragMoveEvent(event);
}

void NodeView::dragMoveEvent(QDragMoveEvent* event) {
    const bool holdsFiles = !droppedFiles(*event->mimeData()).isEmpty();
    if (holdsFiles) {
        event->setDropAction(Qt::CopyAction);
    }
    event->setAccepted(holdsFiles);
}

void NodeView::dropEvent(QDropEvent* event) {
    const QStringList files = droppedFiles(*event->mimeData());
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(!files.isEmpty());
    if (!files.isEmpty()) {
        // The program that the files come from waits for the end of the drop.
        QMetaObject::invokeMethod(
            this, [this, files] { emit filesDropped(files); }, Qt::QueuedConnection);
    }
}

bool NodeView::isCommandKey(const QKeyEvent& event) const {
    return state() != EditingState && commandKeys_.contains(keysOf(event));
}

bool NodeView::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride &&
        isCommandKey(static_cast<const QKeyEvent&>(*event))) {
        event->accept();
        return true;
    }
    return QTreeView::event(event);
}

void NodeView::keyPressEvent(QKeyEvent* event) {
    if (isCommandKey(*event)) {
        emit commandKeyPressed(keysOf(*event));
        return;
    }
    const bool chooses = event->key() == Qt::Key_Space || event->key() == Qt::Key_Return ||
                         event->key() == Qt::Key_Enter;
    const QPersistentModelIndex before = currentIndex();
    {
        // The key that opens all nodes below one selects none of them.
        const QScopedValueRollback acting(userActs_, event->key() != Qt::Key_Asterisk);
        QTreeView::keyPressEvent(event);
    }
    const QModelIndex after = currentIndex();
    const bool moved = after != before;
    if (after.isValid() && (moved || (chooses && !selectionModel()->isSelected(after)))) {
        emit nodeClicked(after);
    }
}

}  // namespace varo::ui
