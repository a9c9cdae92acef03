#include "formula/description_pane.h"

#include "library/formula_reader.h"
#include "library/formulas.h"
#include "library/limits.h"
#include "platform/ui/picture_box.h"

#include <QFocusEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRadioButton>

#include <algorithm>
#include <array>

namespace varo {

DescriptionPane::DescriptionPane(DescriptionForm& form, CurrentLibrary& library,
                                 const ShownFormula& shown, Questions& questions)
    : form_(form), library_(library), shown_(shown), refusal_(questions) {
    form.txtDesc->installEventFilter(this);
    for (int i = 0; i < static_cast<int>(form.optDesc.size()); ++i) {
        connect(form.optDesc[static_cast<std::size_t>(i)], &QRadioButton::clicked, this,
                [this, i] { showOption(i); });
    }
}

void DescriptionPane::setEnabled(bool enabled) {
    for (QRadioButton* option : form_.optDesc) {
        option->setEnabled(enabled);
    }
}

void DescriptionPane::clear() {
    form_.optDesc[DescOptionPicture]->setChecked(true);
    form_.txtDesc->clear();
    storedText_.clear();
    refusal_.forget();
    removePicture();
    emit cleared();
}

void DescriptionPane::show(const clsFormulaInfo& formula, HeldMessages& messages) {
    form_.txtDesc->setPlainText(formula.FormulaMemo);
    storedText_ = form_.txtDesc->toPlainText();
    if (formula.FormulaPicPath.isEmpty()) {
        removePicture();
    } else {
        showPictureOf(formula, messages);
    }
}

void DescriptionPane::showPictureOf(const clsFormulaInfo& formula, HeldMessages& messages) {
    HeldMessages unread;
    const QString& file = formula.FormulaPicPath;
    const bool extracted = extractPicture(library_, formula.FormulaID, file, unread);
    if (!unread.isEmpty()) {
        if (!failureTold_) {
            unread.show(messages);
        }
        failureTold_ = true;
        showPicture({});
        return;
    }
    failureTold_ = false;
    if (extracted) {
        showPicture(ui::Picture::read(file));
    } else {
        removePicture();
    }
}

void DescriptionPane::showPicture(const ui::Picture& picture) {
    hasPicture_ = true;
    form_.imgDesc->setPicture(picture);
    if (picture.isNull()) {
        form_.imgDesc->setText(QStringLiteral("无法显示图片"));
    }
    showOnly(form_.imgDesc);
}

bool DescriptionPane::showsPicture() const {
    return !form_.imgDesc->picture().isNull();
}

void DescriptionPane::removePicture() {
    hasPicture_ = false;
    form_.imgDesc->clear();
    showOnly(form_.lblDesc);
}

void DescriptionPane::showOption(int option) {
    if (!shown_.id()) {
        return;
    }
    if (option == DescOptionText) {
        showOnly(form_.txtDesc);
    } else if (hasPicture_) {
        showOnly(form_.imgDesc);
    } else {
        showOnly(form_.lblDesc);
    }
}

/// Keeps the focus in this area: hiding the widget that has it would move it to the next widget of
/// the form.
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
    const bool isGained = event->type() == QEvent::FocusIn;
    if (isGained || event->type() == QEvent::FocusOut) {
        if (isGained) {
            refusal_.focusGained(*static_cast<QFocusEvent*>(event));
        }
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        // A menu takes the focus for a moment only; a window that is activated again keeps its
        // selection.
        const bool isTemporary =
            reason == Qt::PopupFocusReason || (isGained && reason == Qt::ActiveWindowFocusReason);
        if (isGained && !isTemporary) {
            // After the box's own handling of the event, which sets the caret.
            QMetaObject::invokeMethod(form_.txtDesc, &QPlainTextEdit::selectAll,
                                      Qt::QueuedConnection);
        } else if (!isGained && !isTemporary && !store()) {
            QMetaObject::invokeMethod(
                form_.txtDesc, [this] { form_.txtDesc->setFocus(Qt::ActiveWindowFocusReason); },
                Qt::QueuedConnection);
        }
    }
    return QObject::eventFilter(watched, event);
}

bool DescriptionPane::store() {
    const QString text = form_.txtDesc->toPlainText();
    const auto formula = shown_.id();
    if (!formula || text == storedText_) {
        return true;
    }
    if (text.size() > kTextLimit) {
        refusal_.tell(text, QStringLiteral("用户输入的说明超过255个字符！"));
        return false;
    }
    if (!storeMemo(library_, *formula, text)) {
        refusal_.tell(text, QStringLiteral("无法编辑选定公式的备注！"));
        return true;
    }
    storedText_ = text;
    refusal_.forget();
    emit stored(*formula, text);
    return true;
}

}  // namespace varo
