#include "formula/description_pane.h"

#include "platform/ui/node_view.h"
#include "platform/ui/picture_box.h"

#include <QFocusEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRadioButton>

#include <utility>

namespace varo {

DescriptionPane::DescriptionPane(Form& form, ControlState& state, Questions& questions)
    : form_(form), state_(state), questions_(questions) {
    form.txtDesc->installEventFilter(this);
    for (int i = 0; i < static_cast<int>(form.optDesc.size()); ++i) {
        connect(form.optDesc[static_cast<std::size_t>(i)], &QRadioButton::clicked, this,
                [this, i] { showOption(i); });
    }
}

void DescriptionPane::clear() {
    form_.optDesc[DescOptionPicture]->setChecked(true);
    form_.txtDesc->clear();
    form_.txtDesc->document()->setModified(false);
    form_.imgDesc->clear();
}

void DescriptionPane::show(const clsFormulaInfo& formula) {
    form_.txtDesc->setPlainText(formula.FormulaMemo);
    form_.txtDesc->document()->setModified(false);
    const ui::Picture picture = formula.FormulaPicPath.isEmpty()
                                    ? ui::Picture()
                                    : ui::Picture::read(formula.FormulaPicPath);
    if (picture.isNull()) {
        showNoPicture();
    } else {
        showPicture(picture);
    }
}

void DescriptionPane::showPicture(const ui::Picture& picture) {
    form_.imgDesc->setPicture(picture);
    showOnly(form_.imgDesc);
}

void DescriptionPane::showNoPicture() {
    showOnly(form_.lblDesc);
}

void DescriptionPane::removePicture() {
    form_.imgDesc->clear();
    showNoPicture();
}

void DescriptionPane::showOption(int option) {
    if (form_.lvFormula->selectedKey().isEmpty()) {
        return;
    }
    if (option == DescOptionText) {
        showOnly(form_.txtDesc);
    } else if (form_.imgDesc->picture().isNull()) {
        showNoPicture();
    } else {
        showOnly(form_.imgDesc);
    }
}

void DescriptionPane::showOnly(const QWidget* content) {
    for (QWidget* each :
         {static_cast<QWidget*>(form_.txtDesc), static_cast<QWidget*>(form_.imgDesc),
          static_cast<QWidget*>(form_.lblDesc)}) {
        each->setVisible(each == content);
    }
}

bool DescriptionPane::eventFilter(QObject* watched, QEvent* event) {
    const bool gained = event->type() == QEvent::FocusIn;
    if (gained || event->type() == QEvent::FocusOut) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        // A menu only borrows the focus, and a window that comes back goes on where it was left.
        const bool borrowed =
            reason == Qt::PopupFocusReason || (gained && reason == Qt::ActiveWindowFocusReason);
        if (gained && !borrowed) {
            // Behind the box's own handling, which would place the caret.
            QMetaObject::invokeMethod(form_.txtDesc, &QPlainTextEdit::selectAll,
                                      Qt::QueuedConnection);
        } else if (!gained && !borrowed && !store()) {
            QMetaObject::invokeMethod(
                form_.txtDesc, [this] { form_.txtDesc->setFocus(Qt::ActiveWindowFocusReason); },
                Qt::QueuedConnection);
        }
    }
    return QObject::eventFilter(watched, event);
}

bool DescriptionPane::store() {
    const QString text = form_.txtDesc->toPlainText();
    if (!form_.txtDesc->document()->isModified()) {
        return true;
    }
    if (text.size() > TextLimit) {
        if (std::exchange(refused_, text) != text) {
            questions_.inform(QStringLiteral("用户输入的说明超过255个字符！"));
        }
        return false;
    }
    if (!state_.listsCurrentLibrary() ||
        !state_.listedFormulas.contains(state_.currentFormulaKey)) {
        return true;
    }
    clsFormulaInfo& record = state_.listedFormulas.Item(state_.currentFormulaKey);
    if (record.FormulaMemo == text) {
        return true;
    }
    if (state_.dbFuncs.EditFormulaMemo(record.FormulaID, text, state_.connection)) {
        record.FormulaMemo = text;
    } else {
        questions_.inform(QStringLiteral("无法编辑选定公式的备注！"));
    }
    return true;
}

}  // namespace varo
