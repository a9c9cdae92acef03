#pragma once

#include "control/form.h"
#include "control/state.h"
#include "engine/calc_engine.h"

#include <QObject>

#include <optional>

namespace varo {

/// Lets the user pick a variable's value from a data table.
class ValuePicker {
  public:
    virtual ~ValuePicker() = default;

    /// The picked value; nothing when the user cancels. `database` is a file in the folder `path`.
    virtual std::optional<QString> pick(const QString& path, const QString& database,
                                        const QString& table) = 0;
};

/// Makes sure that `variables` holds what formula `formulaID` can see of the stored values of
/// `name`: its own and the unowned ones. Returns false when reading fails.
bool LoadVarCache(const QString& name, qint32 formulaID, data::Connection& connection,
                  colVarInfo& variables, clsDBFuncs& dbFuncs);

/// The variable grid: a row for each variable that the engine finds in the formula, in its order,
/// with the stored value, the host's answer, or "0". Values that the user types are stored at once.
class VariableGrid : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this; `form` lends MSFEditVarList and the selections of
    /// list and tree.
    VariableGrid(Form& form, ControlState& state, Questions& questions, PropertySource& properties,
                 engine::CalcEngine& engine);

    /// Who picks values from data tables; without one, activating a cell does nothing.
    void setValuePicker(ValuePicker* picker) { picker_ = picker; }

    /// Makes the rows anew for this formula text. Leaves the engine with the text parsed.
    void rebuild(const QString& formula);

    /// Asks the host again for the value of every variable that a property feeds. Returns false,
    /// asking nothing, when the grid does not show the engine's variables.
    bool refreshPropertyValues();

  private:
    const clsVarInfo* visibleRecord(const QString& name, qint32 formulaID);
    bool load(const QString& name, qint32 formulaID);
    void showVariable(int row, const QString& name, qint32 formulaID);
    QString hostValue(const clsVarInfo& variable);
    void storeValue(int row, int column, const QString& text);
    void changeOwnValue(int row, clsVarInfo& record, QString value);
    void addOwnValue(int row, const QString& name, qint32 formulaID, QString value);
    void pickValue(int row);

    Form& form_;
    ControlState& state_;
    Questions& questions_;
    PropertySource& properties_;
    engine::CalcEngine& engine_;
    ValuePicker* picker_ = nullptr;
};

}  // namespace varo
