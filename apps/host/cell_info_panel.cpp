#include "host/cell_info_panel.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

#include <limits>

namespace varo::host {

namespace {

constexpr std::array<const char*, std::tuple_size_v<CellNumbers>> kNames{
    "UnitContentID", "UnitTypeID", "PrptysetID", "RecordsetID", "FieldID", "RecNum"};

}  // namespace

CellInfoPanel::CellInfoPanel(QWidget* parent) : QWidget(parent) {
    constexpr int kColumns = 2;
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(4, 2, 4, 4);
    grid->setVerticalSpacing(2);
    int row = 0;
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        const QString name = QString::fromLatin1(kNames[i]);
        auto* box = boxes_[i] = new QSpinBox(this);
        box->setObjectName(name);
        box->setRange(std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max());
        // Room for the usual small numbers; the range's widest would push the control aside.
        box->setMinimumWidth(1);
        auto* label = new QLabel(name, this);
        label->setBuddy(box);
        const int column = static_cast<int>(i) % kColumns;
        grid->addWidget(label, row, column);
        grid->addWidget(box, row + 1, column);
        row += column == kColumns - 1 ? 2 : 0;
    }
    auto* write = new QPushButton(QStringLiteral("写入"), this);
    write->setObjectName(QStringLiteral("writeCell"));
    write->setToolTip(QStringLiteral("SetCellInfo：把单元信息交给控件，并重新取得属性值"));
    connect(write, &QPushButton::clicked, this, &CellInfoPanel::writeRequested);
    auto* read = new QPushButton(QStringLiteral("读取"), this);
    read->setObjectName(QStringLiteral("readCell"));
    read->setToolTip(QStringLiteral("GetCellInfo：从控件读回单元信息"));
    connect(read, &QPushButton::clicked, this, &CellInfoPanel::readRequested);
    grid->addWidget(write, row, 0);
    grid->addWidget(read, row, 1);
}

CellNumbers CellInfoPanel::numbers() const {
    CellNumbers numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        numbers[i] = boxes_[i]->value();
    }
    return numbers;
}

void CellInfoPanel::setNumbers(const CellNumbers& numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        boxes_[i]->setValue(numbers[i]);
    }
}

}  // namespace varo::host
