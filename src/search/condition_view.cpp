#include "search/condition_view.h"

#include "library/condition_trial.h"
#include "library/condition_words.h"
#include "library/limits.h"
#include "platform/ui/empty_text.h"
#include "platform/ui/icons.h"

#include <QComboBox>
#include <QCompleter>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>

#include <algorithm>

namespace varo {

namespace {

/// The column that an editor's end leads to; -1 when the editing is over.
int nextColumn(const ConditionNode& node, int column, QAbstractItemDelegate::EndEditHint hint) {
    const int step = hint == QAbstractItemDelegate::EditNextItem       ? 1
                     : hint == QAbstractItemDelegate::EditPreviousItem ? -1
                                                                       : 0;
    const int next = column + step;
    const bool isPart = node.type == ConditionType::Comparison &&
                        next >= ConditionModel::SubjectColumn &&
                        next <= ConditionModel::ConstantColumn;
    return step != 0 && isPart ? next : -1;
}

const ConditionNode& nodeAt(const QModelIndex& index) {
    return static_cast<const ConditionModel*>(index.model())->nodeAt(index);
}

/// The names that a comparison can be saved with, each once, sorted.
QStringList usableNames(QStringList names) {
    names.removeIf(
        [](const QString& name) { return name.trimmed().isEmpty() || name.size() > kTextLimit; });
    names.sort();
    names.removeDuplicates();
    return names;
}

}  // namespace

QWidget* ConditionDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                         const QModelIndex& index) const {
    const ConditionNode& node = nodeAt(index);
    if (node.isGroup() || index.column() == ConditionModel::ComparisonColumn) {
        editor_ = createChoice(parent, node);
    } else if (index.column() == ConditionModel::SubjectColumn) {
        const auto& model = static_cast<const ConditionModel&>(*index.model());
        editor_ = createNameBox(parent, model.tree());
    } else {
        editor_ = new QLineEdit(parent);
        editor_->setObjectName(QStringLiteral("txtConst"));
    }
    return editor_;
}

/// A box whose choice is taken at once.
QWidget* ConditionDelegate::createChoice(QWidget* parent, const ConditionNode& node) const {
    auto* box = new QComboBox(parent);
    if (node.isGroup()) {
        box->setObjectName(QStringLiteral("cmbGroup"));
        for (const auto type : {ConditionType::And, ConditionType::Or, ConditionType::Not}) {
            box->addItem(conditionTypeWords(type), static_cast<qint32>(type));
        }
    } else {
        box->setObjectName(QStringLiteral("cmbCompare"));
        for (const CompareTypeNames& names : compareTypes()) {
            box->addItem(names.words, static_cast<qint32>(names.type));
        }
        box->setMaxVisibleItems(box->count());
    }
    auto* self = const_cast<ConditionDelegate*>(this);
    connect(box, &QComboBox::activated, self, [self, box] {
        emit self->commitData(box);
        emit self->closeEditor(box);
    });
    return box;
}

QWidget* ConditionDelegate::createNameBox(QWidget* parent, const ConditionTree& tree) const {
    auto* box = new QComboBox(parent);
    box->setObjectName(QStringLiteral("cmbName"));
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    if (!names_) {
        names_ = nameSource_ ? nameSource_() : QStringList();
    }
    box->addItems(usableNames(*names_ + savedNames_ + namesIn(tree)));
    box->completer()->setCaseSensitivity(Qt::CaseInsensitive);
    box->completer()->setCompletionMode(QCompleter::PopupCompletion);
    box->completer()->setFilterMode(Qt::MatchContains);
    return box;
}

void ConditionDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    const ConditionNode& node = nodeAt(index);
    if (auto* line = qobject_cast<QLineEdit*>(editor)) {
        line->setText(node.term.constant);
        return;
    }
    auto& box = static_cast<QComboBox&>(*editor);
    if (box.isEditable()) {
        box.setCurrentIndex(box.findText(node.term.name));
        box.setEditText(node.term.name);
        box.lineEdit()->selectAll();
    } else {
        box.setCurrentIndex(
            box.findData(node.isGroup() ? static_cast<qint32>(node.type) : node.term.type));
    }
}

void ConditionDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                     const QModelIndex& index) const {
    if (auto* line = qobject_cast<QLineEdit*>(editor)) {
        model->setData(index, line->text());
        return;
    }
    const auto& box = static_cast<const QComboBox&>(*editor);
    if (box.isEditable()) {
        model->setData(index, box.currentText());
    } else if (box.currentIndex() >= 0) {
        model->setData(index, box.currentData());
    }
}

QSize ConditionDelegate::sizeHint(const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const {
    constexpr int kRoomForEditor = 6;
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, kRoomForEditor);
}

void ConditionDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                             const QModelIndex&) const {
    // At least as high as the editor needs, so that no text is cut.
    QRect place = option.rect;
    const int height = std::max(place.height(), editor->sizeHint().height());
    place.setTop(std::max(0, place.center().y() - height / 2));
    place.setHeight(height);
    editor->setGeometry(place);
}

ConditionView::ConditionView(QWidget* parent)
    : QTreeView(parent), delegate_(new ConditionDelegate(this)) {
    setItemDelegate(delegate_);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setUniformRowHeights(true);
    setExpandsOnDoubleClick(false);
    setAllColumnsShowFocus(true);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                    QAbstractItemView::AnyKeyPressed);
    setDragDropMode(QAbstractItemView::InternalMove);
    setDefaultDropAction(Qt::MoveAction);
    setDropIndicatorShown(true);
    setTextElideMode(Qt::ElideRight);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    setIconSize(ui::iconSizeFor(*this));
}

void ConditionView::setPlaceholder(const QString& text) {
    placeholder_ = text;
    viewport()->update();
}

void ConditionView::select(const QModelIndex& index) {
    if (!index.isValid()) {
        selectionModel()->clear();
        return;
    }
    // A column that can be edited is kept, for the key that edits.
    const int column =
        currentIndex().isValid() ? currentIndex().column() : int(ConditionModel::SubjectColumn);
    selectionModel()->setCurrentIndex(
        index.siblingAtColumn(column),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(index);
}

void ConditionView::commitEdit() {
    const QPointer<QWidget> editor = delegate_->openEditor();
    if (state() != EditingState || editor.isNull()) {
        return;
    }
    commitData(editor);
    if (!editor.isNull()) {
        QTreeView::closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
}

void ConditionView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    const QModelIndex index = currentIndex();
    const int column = index.isValid() ? nextColumn(nodeAt(index), index.column(), hint) : -1;
    const bool steps = hint == QAbstractItemDelegate::EditNextItem ||
                       hint == QAbstractItemDelegate::EditPreviousItem;
    QTreeView::closeEditor(editor, steps ? QAbstractItemDelegate::NoHint : hint);
    if (column >= 0) {
        setCurrentIndex(index.siblingAtColumn(column));
        edit(currentIndex());
    }
}

void ConditionView::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const QModelIndex index = currentIndex();
    if (!isEnter || state() == EditingState || !index.isValid()) {
        QTreeView::keyPressEvent(event);
        return;
    }
    const bool canEdit = index.flags().testFlag(Qt::ItemIsEditable);
    const QModelIndex edited = canEdit ? index : index.siblingAtColumn(0);
    if (edited.flags().testFlag(Qt::ItemIsEditable)) {
        setCurrentIndex(edited);
        edit(edited);
    }
}

void ConditionView::paintEvent(QPaintEvent* event) {
    QTreeView::paintEvent(event);
    ui::paintEmptyText(*this, placeholder_);
}

}  // namespace varo
