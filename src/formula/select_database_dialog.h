#pragma once

#include "library/data_files.h"
#include "platform/questions/questions.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;

namespace varo {

/// The window `frmSelDB`, in which the user chooses a table of a database file in the library's
/// folder. It can be accepted once both are chosen.
class SelectDatabaseDialog : public QDialog {
    Q_OBJECT

  public:
    /// `questions` must outlive this.
    SelectDatabaseDialog(const QString& folder, Questions& questions, QWidget* parent);

    /// Lists the files of the folder, and chooses the table that `chosen` names, if it is there.
    void InitForm(const QString& chosen = {});

    /// Whether the user has closed the dialog in any other way than by OK; false before.
    bool Cancelled() const { return cancelled_; }
    /// The chosen table as the parameter of a source: file, "->", table; "" unless accepted.
    const QString& parameter() const { return parameter_; }

    void accept() override;
    void done(int result) override;

  private:
    void buildLayout();
    void showFolder();
    void openFile();
    bool listTables(const QString& file);
    void showTable();
    void offer();
    QString missing() const;
    DataTableName chosen() const;

    QString folder_;
    Questions& questions_;
    data::Connection connection_;
    bool isOpen_ = false;  ///< lstTableName has the tables of the chosen file
    bool cancelled_ = false;
    QString parameter_;

    QComboBox* DriveDB_;
    QListWidget* DirDB_;
    QListWidget* FileDB_;
    QListWidget* lstTableName_;
    QLabel* lblShowDBPath_;
    QLabel* lblShowDBName_;
    QLabel* lblShowTableName_;
    QLabel* lblMissing_;
    QPushButton* cmdOK_ = nullptr;
};

}  // namespace varo
