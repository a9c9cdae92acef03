#include "formula/variable_grid.h"

#include "engine/numbers.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/node_view.h"
#include "store/attempt.h"
#include "store/keys.h"

namespace varo {

namespace {

constexpr int NameColumn = 0;
constexpr int ValueColumn = 1;

/// Colours of a variable's name by the source of its value, 0x00BBGGRR.
constexpr quint32 Black = 0x000000;
constexpr quint32 Blue = 0xFF0000;
constexpr quint32 Red = 0x0000FF;

const auto Zero = QStringLiteral("0");

bool isZero(const QString& value) {
    const auto number = engine::parseNumber(value.toStdString());
    return number.has_value() && *number == 0;
}

QString orZero(const QString& value) {
    return value.isEmpty() ? Zero : value;
}

}  // namespace

bool LoadVarCache(const QString& name, qint32 formulaID, data::Connection& connection,
                  colVarInfo& variables, clsDBFuncs& dbFuncs) {
    if (variables.Find(name, formulaID) != nullptr) {
        return true;
    }
    data::Recordset rs;
    if (!dbFuncs.GetVarInfoOfFormula(name, formulaID, rs, connection)) {
        return false;
    }
    const bool unownedKnown = variables.Find(name, 0) != nullptr;
    return attempt([&] {
        for (; !rs.atEnd(); rs.moveNext()) {
            const qint32 owner = rs.integer(u"FormulaID");
            if (owner == 0 && unownedKnown) {
                continue;
            }
            bool added = false;
            variables.Add(rs.text(u"VarName"), owner, rs.text(u"Value"),
                          rs.integer(u"VarSourceType"), rs.text(u"VarMemo"), QString(), added);
        }
    });
}

VariableGrid::VariableGrid(Form& form, ControlState& state, Questions& questions,
                           PropertySource& properties, engine::CalcEngine& engine)
    : form_(form), state_(state), questions_(questions), properties_(properties), engine_(engine) {
    connect(form.MSFEditVarList, &ui::EditGrid::CellEdited, this, &VariableGrid::storeValue);
    connect(form.MSFEditVarList, &ui::EditGrid::CellActivate, this, &VariableGrid::pickValue);
}

void VariableGrid::rebuild(const QString& formula) {
    if (formula.isEmpty()) {
        form_.MSFEditVarList->SetRows(1);
        return;
    }
    const qint32 formulaID = formulaIdOf(form_.lvFormula->selectedKey());
    std::int32_t parsed = 0;
    std::int32_t count = 0;
    engine_.ParseFormula(formula.toStdString(), parsed);
    engine_.GetVarCount(count);
    form_.MSFEditVarList->SetRows(count + 1);
    std::string text;
    bool readable = true;
    for (std::int32_t i = 1; i <= count; ++i) {
        engine_.GetVarName(i, text);
        const QString name = QString::fromStdString(text);
        // A failed read leaves its variable with the default; a library that is locked is not
        // waited for once for each variable.
        readable = readable && load(name, formulaID);
        showVariable(i, name, formulaID);
    }
}

bool VariableGrid::load(const QString& name, qint32 formulaID) {
    return LoadVarCache(name, formulaID, state_.connection, state_.variables, state_.dbFuncs);
}

const clsVarInfo* VariableGrid::visibleRecord(const QString& name, qint32 formulaID) {
    const clsVarInfo* own = state_.variables.Find(name, formulaID);
    return own != nullptr ? own : state_.variables.Find(name, 0);
}

QString VariableGrid::hostValue(const clsVarInfo& variable) {
    return orZero(properties_.propertyValue(variable.VarMemo));
}

void VariableGrid::showVariable(int row, const QString& name, qint32 formulaID) {
    const clsVarInfo* record = visibleRecord(name, formulaID);
    quint32 color = Black;
    QString value = record == nullptr ? Zero : record->VarValue;
    switch (record == nullptr ? VarSourceTyped : record->VarSourceType) {
        case VarSourceTyped:
            break;
        case VarSourceProperty:
            color = Blue;
            value = hostValue(*record);
            break;
        case VarSourceTable:
            color = Red;
            break;
        default:
            value.clear();
    }
    form_.MSFEditVarList->SetCellText(row, NameColumn, name);
    form_.MSFEditVarList->SetCellForeColor(row, NameColumn, color);
    form_.MSFEditVarList->SetCellText(row, ValueColumn, value);
}

bool VariableGrid::refreshPropertyValues() {
    std::int32_t count = 0;
    engine_.GetVarCount(count);
    if (form_.MSFEditVarList->Rows() < count + 1) {
        return false;
    }
    const qint32 formulaID = formulaIdOf(form_.lvFormula->selectedKey());
    std::string name;
    for (std::int32_t i = 1; i <= count; ++i) {
        engine_.GetVarName(i, name);
        const clsVarInfo* record = visibleRecord(QString::fromStdString(name), formulaID);
        if (record != nullptr && record->VarSourceType == VarSourceProperty) {
            form_.MSFEditVarList->SetCellText(i, ValueColumn, hostValue(*record));
        }
    }
    return true;
}

void VariableGrid::storeValue(int row, int column, const QString& text) {
    const QString selected = form_.lvFormula->selectedKey();
    if (selected.isEmpty() || !state_.listsCurrentLibrary()) {
        return;
    }
    const qint32 formulaID = formulaIdOf(selected);
    const QString name = form_.MSFEditVarList->GetCellText(row, NameColumn);
    const QString value = text.trimmed();
    if (value.size() > TextLimit) {
        questions_.inform(QStringLiteral("给定变量的值超过255个字符"));
        form_.MSFEditVarList->SetCellText(row, column, Zero);
        return;
    }
    if (!load(name, formulaID)) {
        questions_.inform(QStringLiteral("无法添加新的变量！"));
    } else if (clsVarInfo* own = state_.variables.Find(name, formulaID)) {
        changeOwnValue(row, *own, value);
    } else {
        addOwnValue(row, name, formulaID, value);
    }
}

void VariableGrid::changeOwnValue(int row, clsVarInfo& record, QString value) {
    if (record.VarValue == value) {
        return;
    }
    if (value.isEmpty()) {
        value = Zero;
        form_.MSFEditVarList->SetCellText(row, ValueColumn, value);
    }
    if (!state_.dbFuncs.EditFormulaVarValue(record.VarName, record.FormulaID, value,
                                            state_.connection)) {
        questions_.inform(QStringLiteral("无法编辑选定变量的值！"));
        return;
    }
    record.VarValue = value;
}

void VariableGrid::addOwnValue(int row, const QString& name, qint32 formulaID, QString value) {
    if (isZero(value)) {
        return;
    }
    if (value.isEmpty()) {
        value = Zero;
        form_.MSFEditVarList->SetCellText(row, ValueColumn, value);
    }
    const auto cannotAdd = [this] { questions_.inform(QStringLiteral("无法添加新的变量！")); };
    if (clsVarInfo* unowned = state_.variables.Find(name, 0)) {
        if (!state_.dbFuncs.ChangeVarBelong(unowned->VarName, 0, formulaID, state_.connection,
                                            value)) {
            cannotAdd();
            return;
        }
        unowned->FormulaID = formulaID;
        unowned->VarValue = value;
        return;
    }
    if (!state_.dbFuncs.AddNewVar(name, formulaID, value, state_.connection)) {
        cannotAdd();
        return;
    }
    bool added = false;
    state_.variables.Add(name, formulaID, value, VarSourceTyped, QString(), QString(), added);
}

void VariableGrid::pickValue(int row) {
    const QString selected = form_.lvFormula->selectedKey();
    const QString name = form_.MSFEditVarList->GetCellText(row, NameColumn);
    const clsVarInfo* shown = state_.variables.Find(name, formulaIdOf(selected));
    if (picker_ == nullptr || selected.isEmpty() || shown == nullptr ||
        shown->VarSourceType != VarSourceTable) {
        return;
    }
    const QString library = state_.currentLibrary();
    const QString source = shown->VarMemo;
    const auto separator = source.indexOf(kKeySeparator);
    const auto picked =
        picker_->pick(state_.currentLibraryPath, source.first(std::max(separator, qsizetype{0})),
                      separator < 0 ? QString() : source.sliced(separator + kKeySeparator.size()));
    // The picker is modal to the user, not to the host, which may have turned to something else
    // meanwhile.
    clsVarInfo* record = state_.variables.Find(name, formulaIdOf(selected));
    if (!picked || record == nullptr || form_.lvFormula->selectedKey() != selected ||
        state_.currentLibrary() != library ||
        form_.MSFEditVarList->GetCellText(row, NameColumn) != name) {
        return;
    }
    form_.MSFEditVarList->SetCellText(row, ValueColumn, *picked);
    if (!state_.dbFuncs.EditFormulaVarValue(record->VarName, record->FormulaID, *picked,
                                            state_.connection)) {
        questions_.inform(QStringLiteral("无法编辑选定变量的值！"));
        return;
    }
    record->VarValue = *picked;
}

}  // namespace varo
