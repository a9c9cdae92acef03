#include "formula/formula_pane.h"

#include "platform/ui/edit_grid.h"
#include "platform/ui/node_view.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabBar>
#include <QToolBar>

namespace varo {

FormulaPane::FormulaPane(Form& form, ControlState& state, Questions& questions,
                         PropertySource& properties)
    : form_(form),
      box_(form, state, questions),
      description_(form, state, questions),
      variables_(form, state, questions, properties, engine_),
      calculator_(form, engine_),
      palette_(form) {
    connect(&box_, &FormulaBox::textChanged, &variables_, &VariableGrid::rebuild);
}

void FormulaPane::ClearFormulaPanel() {
    description_.clear();
    box_.setText(QString());
    form_.MSFEditVarList->SetRows(1);
    form_.txtResult->clear();
}

void FormulaPane::SetPanelState(int state) {
    const std::initializer_list<QWidget*> withFormula{form_.optDesc[DescOptionText],
                                                      form_.optDesc[DescOptionPicture],
                                                      form_.TabStripSymbol,
                                                      form_.txtFormula,
                                                      form_.MSFEditVarList,
                                                      form_.UpDownPrecision,
                                                      form_.CmdAddResult,
                                                      form_.cmdClearResult,
                                                      form_.txtResult,
                                                      form_.cmdCalCulate};
    const std::initializer_list<QWidget*> withResult{form_.cmdSaveResult, form_.cmdCopy,
                                                     form_.cmdSend};
    const bool formula = state == FormulaSelected;
    // Each widget gets its new state at once: disabling it in between would take the focus from it.
    for (QWidget* widget : withFormula) {
        widget->setEnabled(formula);
    }
    for (QWidget* widget : withResult) {
        widget->setEnabled(false);
    }
    for (QToolBar* symbols : form_.tbSymbol) {
        symbols->setEnabled(formula && form_.txtFormula->hasFocus());
    }
    if (state == FolderSelected) {
        form_.tvFolder->setEnabled(true);
        form_.lvFormula->setEnabled(true);
    }
}

void FormulaPane::showExpression(const clsFormulaInfo& formula) {
    if (formula.FormulaExpression.isEmpty()) {
        return;
    }
    box_.setText(formula.FormulaExpression);
    calculator_.calculate();
}

bool FormulaPane::storeEdits() {
    form_.MSFEditVarList->commitEdit();
    box_.store();
    return description_.store();
}

}  // namespace varo
