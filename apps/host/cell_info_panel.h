#pragma once

#include <QWidget>

#include <array>

class QSpinBox;

namespace varo::host {

/// UnitContentID, UnitTypeID, PrptysetID, RecordsetID, FieldID and RecNum, in this order.
using CellNumbers = std::array<qint32, 6>;

/// The six numbers of a cell, for the user to edit, with buttons that hand them to the control and
/// fetch them from it.
class CellInfoPanel : public QWidget {
    Q_OBJECT

  public:
    explicit CellInfoPanel(QWidget* parent = nullptr);

    CellNumbers numbers() const;
    void setNumbers(const CellNumbers& numbers);

  signals:
    void writeRequested();
    void readRequested();

  private:
    std::array<QSpinBox*, std::tuple_size_v<CellNumbers>> boxes_{};
};

}  // namespace varo::host
