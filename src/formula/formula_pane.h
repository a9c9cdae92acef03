#pragma once

#include "form/form.h"
#include "form/selection_state.h"
#include "formula/calculator.h"
#include "formula/description_pane.h"
#include "formula/formula_box.h"
#include "formula/parsed_formula.h"
#include "formula/shown_formula.h"
#include "formula/symbol_palette.h"
#include "formula/value_picking.h"
#include "formula/variable_grid.h"
#include "library/current_library.h"
#include "library/property_source.h"

#include <QObject>

namespace varo {

/// The panel that shows one formula of the current library, or none: its description and picture,
/// its text, its variables with their values, and the result. What the user changes is stored in
/// the library.
class FormulaPane : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    FormulaPane(PanelForm& form, CurrentLibrary& library, PropertySource& properties,
                Questions& questions);

    /// Shows a formula of the current library: its description and picture, then its text, and
    /// calculates it. The widgets accept input then, as SetPanelState(Formula) lets them. What was
    /// being typed for another formula is dropped; see storeEdits(). Asks the host for values, who
    /// may show another formula meanwhile, which then stays; `formula` is not used any more by
    /// then. Why its picture cannot be written to a file is added to `messages`.
    void show(const clsFormulaInfo& formula, HeldMessages& messages);

    /// Empties the panel: no formula is shown then, and nothing that is typed is stored.
    void ClearFormulaPanel();

    /// Enables the widgets that accept input in `state`, disables the others.
    void SetPanelState(SelectionState state);

    /// Identifier of the shown formula; none while none is shown, and while another library than
    /// the formula's is the current one.
    std::optional<qint32> shown() const { return shown_.id(); }

    /// Stores what is being typed into the variable grid, the formula box or the description box.
    /// Returns false when the user has to correct something first and must stay where it is.
    bool storeEdits();

    /// Asks the host again for the values that it feeds to the shown formula, and recalculates.
    void refreshPropertyValues();

    /// Lets the user edit where the values of the shown formula's variables come from, shows them
    /// anew, and recalculates.
    void editVariableSources();

    DescriptionPane& description() { return description_; }
    Calculator& calculator() { return calculator_; }

  signals:
    /// The text or the description of a formula has been stored.
    void expressionStored(qint32 formulaID, const QString& expression);
    void memoStored(qint32 formulaID, const QString& memo);

  private:
    void takeText(const QString& text);

    PanelForm& form_;
    CurrentLibrary& library_;
    Questions& questions_;
    ShownFormula shown_;
    ParsedFormula formula_;
    FormulaBox box_;
    DescriptionPane description_;
    VariableGrid variables_;
    ValuePicking picking_;
    Calculator calculator_;
    SymbolPalette palette_;
};

}  // namespace varo
