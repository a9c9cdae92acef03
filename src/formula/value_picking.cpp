#include "formula/value_picking.h"

#include "form/form.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/edit_grid.h"

#include <QPointer>

namespace varo {

ValuePicking::ValuePicking(ui::EditGrid& grid, CurrentLibrary& library, const ShownFormula& shown,
                           Questions& questions)
    : grid_(grid), library_(library), shown_(shown), questions_(questions), stored_(library) {
    connect(&grid, &ui::EditGrid::CellActivate, this, &ValuePicking::activate);
}

void ValuePicking::activate(int row) {
    const auto formula = shown_.id();
    const QString name = grid_.GetCellText(row, kNameColumn);
    if (isPicking_ || !formula || !stored_.tableOf(name, *formula)) {
        return;
    }
    isPicking_ = true;
    // So that the cell is not edited afterwards, whatever is picked.
    grid_.SetCellText(row, kValueColumn, grid_.GetCellText(row, kValueColumn));
    // Queued: the host may destroy the control, and so the grid, while the dialog is open.
    QMetaObject::invokeMethod(
        this, [this, name] { pick(name); }, Qt::QueuedConnection);
}

void ValuePicking::pick(const QString& name) {
    const auto formula = shown_.id();
    const auto parameter = formula ? stored_.tableOf(name, *formula) : std::nullopt;
    if (!parameter) {
        isPicking_ = false;
        return;
    }
    const QString before = stored_.valuesOf({name}, *formula).front().value;
    const int libraryNumber = library_.number();
    const QString folder = library_.folder();
    const QPointer<SelectValueDialog> dialog =
        new SelectValueDialog(folder, dataTableOf(*parameter), questions_, grid_.parentWidget());
    dialog->InitForm();
    const QStringList where{folder, *parameter, before};
    dialog->goTo(before,
                 places_.contains(where) ? std::optional(places_.value(where)) : std::nullopt);
    ui::runDialog(*dialog);
    if (dialog.isNull()) {
        return;  // destroyed with the control
    }
    if (!dialog->Cancelled()) {
        if (dialog->place()) {
            places_.insert({folder, *parameter, dialog->value()}, *dialog->place());
        }
        take(*dialog, name, *formula, libraryNumber);
    }
    delete dialog;
    isPicking_ = false;
}

/// The host may have turned the control to another formula, or library, while the dialog was open.
void ValuePicking::take(const SelectValueDialog& dialog, const QString& name, qint32 formulaID,
                        int libraryNumber) {
    const QString value = dialog.value();
    const bool isOpen = library_.number() == libraryNumber;
    const StoredEdit edit = isOpen ? stored_.storePicked(name, formulaID, value)
                                   : StoredEdit{value, valueNotStoredMessage()};
    if (isOpen && shown_.id() == formulaID) {
        for (int row = 1; row < grid_.Rows(); ++row) {
            if (grid_.GetCellText(row, kNameColumn) == name) {
                grid_.SetCellText(row, kValueColumn, value);
                grid_.SetCellNote(row, kValueColumn, QString());
            }
        }
        emit valueChanged();
    }
    if (!edit.failure.isEmpty()) {
        questions_.inform(edit.failure);
    }
}

}  // namespace varo
