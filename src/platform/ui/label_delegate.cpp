#include "platform/ui/label_delegate.h"

#include <QMetaProperty>

namespace varo::ui {

QWidget* LabelDelegate::opened(QWidget* editor) const {
    editor_ = editor;
    return editor;
}

void LabelDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                 const QModelIndex& index) const {
    accepted_ = model->setData(index, editor->property(editor->metaObject()->userProperty().name()),
                               Qt::EditRole);
}

bool LabelDelegate::commitEdit() {
    if (editor_ == nullptr) {
        return true;
    }
    emit commitData(editor_);
    const bool accepted = accepted_;
    if (editor_ != nullptr) {
        emit closeEditor(editor_, NoHint);
    }
    return accepted;
}

}  // namespace varo::ui
