#pragma once

#include "formula/parsed_formula.h"
#include "library/variable_sources.h"
#include "platform/questions/questions.h"

#include <QDialog>

#include <optional>

class QLineEdit;

namespace varo::ui {
class EditGrid;
}

namespace varo {

/// The window `frmVarSource`, in which the user says where the values of a formula's variables come
/// from: typed, from a property of the host, or from a data table. The changes are stored when it
/// is accepted; it stays open when a step fails.
class VarSourceDialog : public QDialog {
    Q_OBJECT

  public:
    /// For formula `formulaID` of the current library. `library` and `questions` must outlive this.
    VarSourceDialog(const QString& expression, qint32 formulaID, CurrentLibrary& library,
                    Questions& questions, QWidget* parent);

    /// Opens a connection of the dialog's own to the library `TheName` in folder `ThePath`. Returns
    /// false when that fails.
    bool SetConnection(const QString& ThePath, const QString& TheName, const QString& ThePassword);

    /// Shows the formula and, for each of its variables, the stored source; after SetConnection().
    void InitForm();

    void accept() override;

  private:
    void buildLayout();
    void buildGrid();
    void fillRow(int row, const QString& name);
    void showType(int row, qint32 type);
    void takeEdit(int row, int column, const QString& text);
    void pickTable(int row, int column);
    const QStringList& propertyNames();

    const QString expression_;
    Questions& questions_;
    VariableSources sources_;
    ParsedFormula formula_;
    QString folder_;
    std::optional<QStringList> propertyNames_;  ///< nothing before they are needed

    QLineEdit* txtFormula_;
    ui::EditGrid* MSFEditVarSource_;
};

}  // namespace varo
