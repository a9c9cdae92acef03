#pragma once

#include "library/data_files.h"
#include "library/data_table.h"
#include "platform/questions/questions.h"

#include <QDialog>
#include <QTimer>

#include <optional>

class QModelIndex;
class QLabel;
class QLineEdit;
class QPushButton;

namespace varo {

class DataTableModel;
class DataTableView;

/// Where a value was picked.
struct PickedPlace {
    qint64 rowNumber = 0;  ///< see DataTable::numberOf()
    int column = 0;
};

/// The window `frmSelValue`, in which the user picks a value of a data table: a double click on a
/// cell, or Enter or OK for the selected one. An empty cell cannot be picked; a text that is longer
/// than a value may be is refused. While it is open it holds no lock on the file.
class SelectValueDialog : public QDialog {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    SelectValueDialog(const QString& folder, const DataTableName& table, Questions& questions,
                      QWidget* parent);
    ~SelectValueDialog() override;

    /// Opens the table. When that fails, the user is told and the grid stays empty.
    void InitForm();

    /// Goes to the cell with this value, best that at `place`, as soon as the dialog is shown.
    void goTo(const QString& value, const std::optional<PickedPlace>& place);

    /// Whether the user has closed the dialog in any other way than by picking a value; false
    /// before.
    bool Cancelled() const { return cancelled_; }
    /// The picked value; "" unless accepted.
    const QString& value() const { return value_; }
    /// Where it was picked; nothing in a table that does not number its rows.
    const std::optional<PickedPlace>& place() const { return place_; }

    void accept() override;
    void done(int result) override;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void buildLayout();
    void connectParts();
    void findValue();
    void takeFilter();
    void filter();
    void loadMore();
    void moveTo(int row, int column);
    void offer();
    QModelIndex selected() const;
    QString selectedText();

    const QString folder_;
    const DataTableName name_;
    Questions& questions_;
    data::Connection connection_;
    DataTable table_;
    DataTableModel* model_;
    QString wantedValue_;
    std::optional<PickedPlace> wantedPlace_;
    int column_ = -1;  ///< of the cell that was selected last
    bool cancelled_ = false;
    QString value_;
    std::optional<PickedPlace> place_;
    bool isLong_ = false;  ///< so many rows have been listed that filtering takes its time
    QTimer filtering_;
    QTimer loading_;  ///< lists the rest of the rows while nothing else is to be done

    QLineEdit* txtFilter_;
    DataTableView* MSFShowTable_;
    QLabel* lblShowDBPath_;
    QLabel* lblShowTableName_;
    QLabel* lblRows_;
    QPushButton* cmdOK_ = nullptr;
};

}  // namespace varo
