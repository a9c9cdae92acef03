#include "formula/formula_pane.h"

#include "formula/var_source_dialog.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/edit_grid.h"

#include <QLineEdit>
#include <QPointer>

namespace varo {

FormulaPane::FormulaPane(PanelForm& form, CurrentLibrary& library, PropertySource& properties,
                         Questions& questions)
    : form_(form),
      library_(library),
      questions_(questions),
      shown_(library),
      box_(*form.txtFormula, library, shown_, questions),
      description_(form.description, library, shown_, questions),
      variables_(*form.MSFEditVarList, library, shown_, properties, questions),
      picking_(*form.MSFEditVarList, library, shown_, questions),
      calculator_(form.result, *form.MSFEditVarList, formula_),
      palette_(form.symbols, *form.txtFormula) {
    connect(form.txtFormula, &QLineEdit::textChanged, this, &FormulaPane::takeText);
    connect(form.txtFormula, &QLineEdit::returnPressed, &calculator_, &Calculator::calculate);
    connect(&variables_, &VariableGrid::valueChanged, &calculator_, &Calculator::markStale);
    connect(&picking_, &ValuePicking::valueChanged, &calculator_, &Calculator::markStale);
    connect(&box_, &FormulaBox::stored, this, &FormulaPane::expressionStored);
    connect(&description_, &DescriptionPane::stored, this, &FormulaPane::memoStored);
}

void FormulaPane::takeText(const QString& text) {
    calculator_.markStale();
    formula_.setText(text);
    variables_.rebuild(formula_.variables());
}

void FormulaPane::show(const clsFormulaInfo& formula, HeldMessages& messages) {
    ClearFormulaPanel();
    shown_.set(formula.FormulaID);
    description_.show(formula, messages);
    SetPanelState(SelectionState::Formula);
    // Last: filling the grid asks the host, who may show something else.
    const QString expression = formula.FormulaExpression;
    if (!expression.isEmpty()) {
        box_.setText(expression);
        calculator_.calculate();
    }
}

void FormulaPane::ClearFormulaPanel() {
    shown_.clear();
    description_.clear();
    box_.setText(QString());
    calculator_.clear();
}

void FormulaPane::SetPanelState(SelectionState state) {
    const bool isFormula = state == SelectionState::Formula;
    // Each widget gets its new state at once: one that is disabled in between loses the focus.
    form_.txtFormula->setEnabled(isFormula);
    form_.MSFEditVarList->setEnabled(isFormula);
    description_.setEnabled(isFormula);
    palette_.setEnabled(isFormula);
    calculator_.setEnabled(isFormula);
}

bool FormulaPane::storeEdits() {
    form_.MSFEditVarList->commitEdit();
    box_.store();
    return description_.store();
}

void FormulaPane::editVariableSources() {
    const auto formula = shown_.id();
    if (!formula) {
        return;
    }
    const int libraryNumber = library_.number();
    const QString text = box_.text();
    const QPointer<VarSourceDialog> dialog = new VarSourceDialog(
        text, *formula, library_, questions_, form_.MSFEditVarList->parentWidget());
    if (!dialog->SetConnection(library_.folder(), library_.fileName(), QString())) {
        delete dialog;
        questions_.inform(QStringLiteral("无法打开用户选择的数据库！"));
        return;
    }
    dialog->InitForm();
    ui::runDialog(*dialog);
    if (dialog.isNull()) {
        return;  // destroyed with the control
    }
    delete dialog;
    // The host may have turned the control to another formula meanwhile.
    if (library_.number() == libraryNumber && shown_.id() == formula) {
        box_.reload(text);
        calculator_.calculate();
    }
}

void FormulaPane::refreshPropertyValues() {
    variables_.refreshPropertyValues();
    calculator_.calculate();
}

}  // namespace varo
