#include "manager/library_list_view.h"

#include "manager/library_list_model.h"
#include "platform/ui/icons.h"

#include <QDragMoveEvent>
#include <QHeaderView>
#include <QMetaProperty>
#include <QPainter>
#include <QPointer>
#include <QStyledItemDelegate>

namespace varo {

namespace {

class LibraryDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        editor_ = QStyledItemDelegate::createEditor(parent, option, index);
        editor_->setObjectName(QStringLiteral("labelEditor"));
        return editor_;
    }

    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override {
        accepted_ = model->setData(
            index, editor->property(editor->metaObject()->userProperty().name()), Qt::EditRole);
    }

    /// The editor that was made last; null when it is gone.
    QWidget* editor() const { return editor_; }
    /// Whether the model took the text that was typed last.
    bool accepted() const { return accepted_; }

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        if (index.column() == LibraryListModel::PathColumn) {
            option->textElideMode = Qt::ElideMiddle;
        }
    }

  private:
    mutable QPointer<QWidget> editor_;
    mutable bool accepted_ = true;
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
    const auto& delegate = static_cast<const LibraryDelegate&>(*itemDelegate());
    const QPointer<QWidget> editor = delegate.editor();
    if (state() != EditingState || editor == nullptr) {
        return true;
    }
    commitData(editor);
    if (editor != nullptr) {
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
    return delegate.accepted();
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
    if (model() == nullptr || model()->rowCount() > 0) {
        return;
    }
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    constexpr int kMargin = 12;
    painter.drawText(viewport()->rect().adjusted(kMargin, kMargin, -kMargin, -kMargin),
                     Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
}

}  // namespace varo
