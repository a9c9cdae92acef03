#pragma once

#include "formula/select_value_dialog.h"
#include "formula/shown_formula.h"
#include "library/stored_values.h"
#include "platform/questions/questions.h"

#include <QHash>
#include <QObject>

namespace varo::ui {
class EditGrid;
}

namespace varo {

/// Picks the value of a variable that comes from a data table, and stores it, when the user
/// activates the variable's row in the variable grid.
class ValuePicking : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    ValuePicking(ui::EditGrid& grid, CurrentLibrary& library, const ShownFormula& shown,
                 Questions& questions);

  signals:
    /// The user has picked a value, whether or not it could be stored.
    void valueChanged();

  private:
    void activate(int row);
    void pick(const QString& name);
    void take(const SelectValueDialog& dialog, const QString& name, qint32 formulaID,
              int libraryNumber);

    ui::EditGrid& grid_;
    CurrentLibrary& library_;
    const ShownFormula& shown_;
    Questions& questions_;
    StoredValues stored_;
    /// Where each value of a table was picked last, by the file, the table and the value.
    QHash<QStringList, PickedPlace> places_;
    bool isPicking_ = false;
};

}  // namespace varo
