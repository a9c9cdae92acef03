#pragma once

#include <QString>

namespace varo {
class Varo_CalcEx;
}

namespace varo::host {

/// Does with the control what a host and a user do. Everything throws UsageError for what the
/// control does not have.

/// Selects the tree node, or the formula of the selected node, with this key.
void selectKey(Varo_CalcEx& control, const QString& key);

/// Types `value` into the variable's cell of the grid and leaves the cell with Enter.
void typeVariable(Varo_CalcEx& control, const QString& name, const QString& value);

/// Presses the calculate button.
void pressCalculate(Varo_CalcEx& control);

}  // namespace varo::host
