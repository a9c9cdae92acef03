#include "formula/description_pane.h"

#include "platform/ui/node_view.h"
#include "platform/ui/picture_box.h"

#include <QFocusEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRadioButton>

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
    if (!formula.FormulaPicPath.isEmpty() && form_.imgDesc->load(formula.FormulaPicPath)) {
        showOnly(form_.imgDesc);
    } else {
        showNoPicture();
    }
}

void DescriptionPane::showNoPicture() {
    showOnly(form_.lblDesc);
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
    if (event->type() == QEvent::FocusIn) {
        // Behind the box's own handling, which would place the caret.
        QMetaObject::invokeMethod(form_.txtDesc, &QPlainTextEdit::selectAll, Qt::QueuedConnection);
    } else if (event->type() == QEvent::FocusOut) {
        store();
    }
    return QObject::eventFilter(watched, event);
}

void DescriptionPane::store() {
    const QString text = form_.txtDesc->toPlainText();
    if (!form_.txtDesc->document()->isModified()) {
        return;
    }
    if (text.size() > TextLimit) {
        questions_.inform(QStringLiteral("用户输入的说明超过255个字符！"));
        form_.txtDesc->setFocus();
        return;
    }
    if (!state_.listedFormulas.contains(state_.currentFormulaKey)) {
        return;
    }
    clsFormulaInfo& record = state_.listedFormulas.Item(state_.currentFormulaKey);
    if (record.FormulaMemo == text) {
        return;
    }
    if (!state_.dbFuncs.EditFormulaMemo(record.FormulaID, text, state_.connection)) {
        questions_.inform(QStringLiteral("无法编辑选定公式的备注！"));
        return;
    }
    record.FormulaMemo = text;
}

}  // namespace varo
