#pragma once

#include "control/form.h"
#include "control/state.h"
#include "engine/calc_engine.h"
#include "formula/calculator.h"
#include "formula/description_pane.h"
#include "formula/formula_box.h"
#include "formula/symbol_palette.h"
#include "formula/variable_grid.h"

namespace varo {

/// The formula panel as the tree and the list use it: shows one formula or none, and says which of
/// its widgets accept input.
class FormulaPane : public QObject {
    Q_OBJECT

  public:
    /// What the panel shows, and so which widgets accept input. Other numbers are as
    /// NothingSelected.
    enum PanelState { NothingSelected = 1, FolderSelected = 2, FormulaSelected = 4, NoFormula = 5 };

    /// Everything handed in must outlive this.
    FormulaPane(Form& form, ControlState& state, Questions& questions, PropertySource& properties);

    /// Empties the formula panel.
    void ClearFormulaPanel();

    /// Enables the widgets that accept input in `state`, disables the others.
    void SetPanelState(int state);

    /// Shows the description and the picture of a formula in the cleared panel.
    void showDescription(const clsFormulaInfo& formula) { description_.show(formula); }
    void showNoPicture() { description_.showNoPicture(); }

    /// Shows the formula's text with its variables and calculates it; nothing for an empty one.
    void showExpression(const clsFormulaInfo& formula);

    /// Stores what is being typed into the variable grid, the formula box or the description box.
    /// To be called while the library of the shown formula is still connected. Returns false when
    /// the user has to mend something first and must not be led away from it.
    bool storeEdits();

    DescriptionPane& description() { return description_; }
    Calculator& calculator() { return calculator_; }
    VariableGrid& variables() { return variables_; }

  private:
    Form& form_;
    engine::CalcEngine engine_;
    FormulaBox box_;
    DescriptionPane description_;
    VariableGrid variables_;
    Calculator calculator_;
    SymbolPalette palette_;
};

}  // namespace varo
