#include "manager/library_list_view.h"

#include "manager/library_list_model.h"
#include "platform/ui/empty_text.h"
#include "platform/ui/icons.h"
#include "platform/ui/label_delegate.h"

#include <QDragMoveEvent>
#include <QHeaderView>

namespace varo {

namespace {

class LibraryDelegate : public ui::LabelDelegate {
  public:
    using LabelDelegate::LabelDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        QWidget* editor = LabelDelegate::createEditor(parent, option, index);
        editor->setObjectName(QStringLiteral("labelEditor"));
        return opened(editor);
    }

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        LabelDelegate::initStyleOption(option, index);
        if (index.column() == LibraryListModel::PathColumn) {
            option->textElideMode = Qt::ElideMiddle;
        }
    }
};

}  // namespace

LibraryListView::LibraryListView(QWidget* parent) : QTreeView(parent) {
    setItemDelegate(new LibraryDelegate(this));
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::SelectedClicked);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setIconSize(ui::iconSizeFor(*this));
    header()->setSectionsMovable(false);
}

void LibraryListView::setEmptyText(const QString& text) {
    emptyText_ = text;
    viewport()->update();
}

bool LibraryListView::commitEdit() {
    return state() != EditingState || static_cast<ui::LabelDelegate&>(*itemDelegate()).commitEdit();
}

void LibraryListView::dragMoveEvent(QDragMoveEvent* event) {
    QTreeView::dragMoveEvent(event);
    if (event->isAccepted() && event->source() != this) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
}

void LibraryListView::dropEvent(QDropEvent* event) {
    if (event->source() != this) {
        event->setDropAction(Qt::CopyAction);
    }
    QTreeView::dropEvent(event);
}

void LibraryListView::paintEvent(QPaintEvent* event) {
    QTreeView::paintEvent(event);
    ui::paintEmptyText(*this, emptyText_);
}

}  // namespace varo
