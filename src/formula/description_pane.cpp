#include "formula/description_pane.h"

#include "control/formula_reader.h"
#include "platform/ui/node_view.h"
#include "platform/ui/picture_box.h"

#include <QFileInfo>
#include <QFocusEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRadioButton>

#include <algorithm>
#include <array>

namespace varo {

DescriptionPane::DescriptionPane(Form& form, ControlState& state, Questions& questions)
    : form_(form), state_(state), refusal_(questions) {
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
    refusal_.forget();
    emit cleared();
}

void DescriptionPane::show(const clsFormulaInfo& formula) {
    form_.txtDesc->setPlainText(formula.FormulaMemo);
    form_.txtDesc->document()->setModified(false);
    if (!formula.FormulaPicPath.isEmpty() && !QFileInfo::exists(formula.FormulaPicPath) &&
        state_.listsCurrentLibrary()) {
        // Somebody tidied up. The picture is in the library still.
        HeldMessages unread;
        extractPicture(formula.FormulaID, formula.FormulaPicPath, state_.connection, unread);
    }
    if (formula.FormulaPicPath.isEmpty()) {
        showNoPicture();
    } else {
        showPicture(ui::Picture::read(formula.FormulaPicPath));
    }
}

void DescriptionPane::showPicture(const ui::Picture& picture) {
    form_.imgDesc->setPicture(picture);
    if (picture.isNull()) {
        form_.imgDesc->setText(QStringLiteral("无法显示图片"));
    }
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
    const QString key = form_.lvFormula->selectedKey();
    if (!state_.listedFormulas.contains(key)) {
        return;
    }
    if (option == DescOptionText) {
        showOnly(form_.txtDesc);
    } else if (state_.listedFormulas.Item(key).FormulaPicPath.isEmpty()) {
        showNoPicture();
    } else {
        showOnly(form_.imgDesc);
    }
}

/// The focus stays here: a content that is hidden would pass it on to the next widget.
void DescriptionPane::showOnly(QWidget* content) {
    const std::array<QWidget*, 3> contents{form_.txtDesc, form_.imgDesc, form_.lblDesc};
    const bool focused = std::any_of(contents.begin(), contents.end(),
                                     [](const QWidget* each) { return each->hasFocus(); });
    content->show();
    if (focused) {
        content->setFocus();
    }
    for (QWidget* each : contents) {
        each->setVisible(each == content);
    }
}

bool DescriptionPane::eventFilter(QObject* watched, QEvent* event) {
    const bool gained = event->type() == QEvent::FocusIn;
    if (gained || event->type() == QEvent::FocusOut) {
        if (gained) {
            refusal_.focusGained(*static_cast<QFocusEvent*>(event));
        }
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
        refusal_.tell(text, QStringLiteral("用户输入的说明超过255个字符！"));
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
        refusal_.forget();
    } else {
        refusal_.tell(text, QStringLiteral("无法编辑选定公式的备注！"));
    }
    return true;
}

}  // namespace varo
