#pragma once

#include "form/form.h"
#include "formula/shown_formula.h"
#include "library/property_source.h"
#include "library/stored_values.h"
#include "platform/questions/questions.h"

#include <QObject>
#include <QStringList>

namespace varo {

/// The variable grid: a row for each variable of the formula, in order, with the stored value, the
/// host's answer, or "0". A value that the user types is stored at once. A value that could not be
/// read counts as "0"; its cell has a note until the user types one.
class VariableGrid : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    VariableGrid(ui::EditGrid& grid, CurrentLibrary& library, const ShownFormula& shown,
                 PropertySource& properties, Questions& questions);

    /// Rebuilds the rows for these variables of the shown formula. Asks the host for values; when
    /// it makes the grid show something else meanwhile, that stays.
    void rebuild(const QStringList& variables);

    /// Asks the host again for the value of every variable that a property feeds.
    void refreshPropertyValues();

  signals:
    /// The user has changed a value, whether or not it could be stored.
    void valueChanged();

  private:
    std::vector<StoredValue> storedValues();
    bool showValue(int row, const StoredValue& stored);
    void storeValue(int row, int column, const QString& text);

    ui::EditGrid& grid_;
    const ShownFormula& shown_;
    PropertySource& properties_;
    Questions& questions_;
    StoredValues stored_;
    QStringList variables_;
    int rebuilds_ = 0;  ///< how often the rows have been rebuilt
};

}  // namespace varo
