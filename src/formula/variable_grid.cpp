#include "formula/variable_grid.h"

#include "formula/source_colors.h"
#include "platform/ui/edit_grid.h"

namespace varo {

namespace {

bool isKnown(qint32 source) {
    return source == VarSourceTyped || source == VarSourceProperty || source == VarSourceTable;
}

}  // namespace

VariableGrid::VariableGrid(ui::EditGrid& grid, CurrentLibrary& library, const ShownFormula& shown,
                           PropertySource& properties, Questions& questions)
    : grid_(grid), shown_(shown), properties_(properties), questions_(questions), stored_(library) {
    connect(&grid, &ui::EditGrid::CellEdited, this, &VariableGrid::storeValue);
}

std::vector<StoredValue> VariableGrid::storedValues() {
    return stored_.valuesOf(variables_, shown_.id().value_or(0));
}

void VariableGrid::rebuild(const QStringList& variables) {
    ++rebuilds_;
    variables_ = variables;
    grid_.SetRows(static_cast<int>(variables.size()) + 1);
    int row = 0;
    for (const StoredValue& stored : storedValues()) {
        ++row;
        grid_.SetCellText(row, kNameColumn, variables[row - 1]);
        grid_.SetCellForeColor(row, kNameColumn, nameColorOf(stored.source));
        if (!showValue(row, stored)) {
            return;
        }
    }
}

/// Returns false when the host, asked for the value, has made the grid show something else.
bool VariableGrid::showValue(int row, const StoredValue& stored) {
    QString value = isKnown(stored.source) ? stored.value : QString();
    if (stored.source == VarSourceProperty) {
        const int before = rebuilds_;
        const QString answer = properties_.propertyValue(stored.parameter);
        if (rebuilds_ != before) {
            return false;
        }
        value = answer.isEmpty() ? QStringLiteral("0") : answer;
    }
    grid_.SetCellText(row, kValueColumn, value);
    grid_.SetCellNote(row, kValueColumn,
                      stored.isRead ? QString() : QStringLiteral("无法读取存储的值，按“0”计算"));
    return true;
}

void VariableGrid::refreshPropertyValues() {
    int row = 0;
    for (const StoredValue& stored : storedValues()) {
        ++row;
        if (stored.source == VarSourceProperty && !showValue(row, stored)) {
            return;
        }
    }
}

void VariableGrid::storeValue(int row, int column, const QString& text) {
    grid_.SetCellNote(row, column, QString());
    const auto formula = shown_.id();
    if (!formula) {
        emit valueChanged();
        return;
    }
    const StoredEdit edit = stored_.store(grid_.GetCellText(row, kNameColumn), *formula, text);
    grid_.SetCellText(row, column, edit.shown);
    emit valueChanged();
    // Last: the message is modal, and the host may rebuild the grid while it is shown.
    if (!edit.failure.isEmpty()) {
        questions_.inform(edit.failure);
    }
}

}  // namespace varo
