#include "formula/formula_box.h"

#include "platform/ui/tool_tip.h"

#include <QFocusEvent>
#include <QLineEdit>
#include <QTabBar>
#include <QToolBar>

namespace varo {

FormulaBox::FormulaBox(Form& form, ControlState& state, Questions& questions)
    : form_(form), state_(state), refusal_(questions) {
    form.txtFormula->installEventFilter(this);
    connect(form.txtFormula, &QLineEdit::textChanged, this, [this](const QString& text) {
        form_.txtFormula->setToolTip(ui::plainToolTip(text));
        emit textChanged(text);
    });
}

void FormulaBox::setText(const QString& text) {
    // A library made elsewhere can hold longer formulas; cutting them here would lose their end.
    form_.txtFormula->setMaxLength(std::max(TextLimit, static_cast<int>(text.size())));
    form_.txtFormula->setText(text);
    form_.txtFormula->setModified(false);
    refusal_.forget();
}

bool FormulaBox::eventFilter(QObject* watched, QEvent* event) {
    const bool gained = event->type() == QEvent::FocusIn;
    // A menu only borrows the focus; disabling the tool bars would disable the menu of their
    // overflow.
    const bool lost = event->type() == QEvent::FocusOut &&
                      static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason;
    if (gained || lost) {
        if (gained) {
            refusal_.focusGained(*static_cast<QFocusEvent*>(event));
            form_.TabStripSymbol->setEnabled(true);
        }
        for (QToolBar* symbols : form_.tbSymbol) {
            symbols->setEnabled(gained);
        }
        if (!gained) {
            store();
        }
    }
    return QObject::eventFilter(watched, event);
}

void FormulaBox::store() {
    const QString text = form_.txtFormula->text();
    if (text.isEmpty() || !form_.txtFormula->isModified()) {
        return;
    }
    if (text.size() > TextLimit) {
        refusal_.tell(text, QStringLiteral("用户输入的公式超过255个字符！"));
        return;
    }
    if (!state_.listsCurrentLibrary() ||
        !state_.listedFormulas.contains(state_.currentFormulaKey)) {
        return;
    }
    clsFormulaInfo& record = state_.listedFormulas.Item(state_.currentFormulaKey);
    if (record.FormulaExpression == text) {
        return;
    }
    if (!state_.dbFuncs.EditFormulaExpression(record.FormulaID, text, state_.connection)) {
        refusal_.tell(text, QStringLiteral("无法编辑选定公式的内容！"));
        return;
    }
    record.FormulaExpression = text;
    refusal_.forget();
}

}  // namespace varo
