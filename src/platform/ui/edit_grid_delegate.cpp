#include "platform/ui/edit_grid_delegate.h"

#include "platform/ui/colors.h"
#include "platform/ui/icons.h"
#include "platform/ui/shown_text.h"

#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace varo::ui {

QRect EditGrid::Delegate::buttonRect(const QRect& cell) {
    const int width = std::min(cell.width() / 2, cell.height() + 4);
    return QRect(cell.right() - width + 1, cell.top(), width, cell.height());
}

QRect EditGrid::Delegate::textRect(const QRect& cell, const QModelIndex& index) const {
    if (grid_.styleOf(index) != EditStyle::Button) {
        return cell;
    }
    return cell.adjusted(0, 0, -buttonRect(cell).width(), 0);
}

void EditGrid::Delegate::initStyleOption(QStyleOptionViewItem* option,
                                         const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    if (!option->state.testFlag(QStyle::State_Enabled)) {
        // A cell's own colour would make it look enabled.
        option->palette = grid_.palette();
    } else if (index.data(Qt::ForegroundRole).isValid()) {
        const QColor shown = readable(option->palette.color(QPalette::Text), grid_.palette());
        option->palette.setColor(QPalette::Text, shown);
    }
    if (!noteOf(index).isEmpty()) {
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->icon = ownIcon(QStringLiteral("warning"));
        option->decorationSize = iconSizeFor(grid_);
    }
}

QString EditGrid::Delegate::noteOf(const QModelIndex& index) {
    return index.data(Qt::AccessibleDescriptionRole).toString();
}

void EditGrid::Delegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
    QStyleOptionViewItem text(option);
    text.rect = textRect(option.rect, index);
    QStyledItemDelegate::paint(painter, text, index);
    if (grid_.styleOf(index) != EditStyle::Button) {
        return;
    }
    QStyleOptionButton button;
    button.rect = buttonRect(option.rect);
    button.palette = grid_.palette();
    button.fontMetrics = option.fontMetrics;
    button.text = QStringLiteral("…");
    button.state = option.state & QStyle::State_Enabled;
    button.state |= grid_.pressedButton_ == index ? QStyle::State_Sunken : QStyle::State_Raised;
    grid_.style()->drawControl(QStyle::CE_PushButton, &button, painter, &grid_);
}

bool EditGrid::Delegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                   const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    const QString text = index.data().toString();
    const bool isCut = sizeHint(option, index).width() > textRect(option.rect, index).width();
    const QString note = noteOf(index);
    const QString shown = note.isEmpty() ? (isCut ? text : QString()) : note + u'\n' + text;
    QToolTip::showText(event->globalPos(), plainToolTip(shown), view);
    return true;
}

QWidget* EditGrid::Delegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                          const QModelIndex& index) const {
    if (grid_.offersChoices(index)) {
        return createChoiceEditor(parent, grid_.styleOf(index) != EditStyle::DropDown);
    }
    auto* line = new QLineEdit(parent);
    line->setFrame(false);
    const QStringList suggestions = index.data(SuggestionsRole).toStringList();
    if (!suggestions.isEmpty()) {
        auto* completer = new QCompleter(suggestions, line);
        completer->setCaseSensitivity(Qt::CaseInsensitive);
        completer->setFilterMode(Qt::MatchContains);
        line->setCompleter(completer);
    }
    return line;
}

QWidget* EditGrid::Delegate::createChoiceEditor(QWidget* parent, bool freeText) const {
    auto* choice = new QComboBox(parent);
    choice->addItems(grid_.listItems_);
    if (freeText) {
        choice->setEditable(true);
        choice->setInsertPolicy(QComboBox::NoInsert);
        // Completion would put in more than was typed.
        choice->setCompleter(nullptr);
    }
    auto* self = const_cast<Delegate*>(this);
    connect(choice, &QComboBox::activated, this, [self, choice] {
        if (choice->isVisible()) {
            emit self->commitData(choice);
            emit self->closeEditor(choice, NoHint);
        }
    });
    return choice;
}

void EditGrid::Delegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    const QString text = index.data(Qt::EditRole).toString();
    if (auto* choice = qobject_cast<QComboBox*>(editor)) {
        choice->setCurrentIndex(choice->findText(text));
        if (choice->isEditable()) {
            choice->setEditText(text);
            choice->lineEdit()->selectAll();
        }
    } else if (auto* line = qobject_cast<QLineEdit*>(editor)) {
        line->setText(text);
    }
}

void EditGrid::Delegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                      const QModelIndex& index) const {
    if (const auto* line = qobject_cast<const QLineEdit*>(editor)) {
        model->setData(index, line->text());
        return;
    }
    const auto* choice = qobject_cast<const QComboBox*>(editor);
    if (choice && (choice->isEditable() || choice->currentIndex() >= 0)) {
        model->setData(index, choice->currentText());
    }
}

void EditGrid::Delegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                              const QModelIndex& index) const {
    editor->setGeometry(textRect(option.rect, index));
}

}  // namespace varo::ui
