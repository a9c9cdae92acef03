#include "host/property_table.h"

#include <QBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>

namespace varo::host {

namespace {

enum Column { NameColumn, ValueColumn, ColumnCount };

}  // namespace

PropertyTable::PropertyTable(QWidget* parent)
    : QWidget(parent), table_(new QTableWidget(0, ColumnCount, this)) {
    table_->setObjectName(QStringLiteral("properties"));
    table_->setHorizontalHeaderLabels({QStringLiteral("属性名称"), QStringLiteral("属性值")});
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table_->verticalHeader()->hide();
    table_->setSelectionMode(QAbstractItemView::SingleSelection);

    auto* add = new QPushButton(QStringLiteral("添加"), this);
    add->setObjectName(QStringLiteral("addProperty"));
    connect(add, &QPushButton::clicked, this, &PropertyTable::addEmptyRow);
    auto* remove = new QPushButton(QStringLiteral("删除"), this);
    remove->setObjectName(QStringLiteral("removeProperty"));
    remove->setEnabled(false);
    connect(remove, &QPushButton::clicked, this, &PropertyTable::removeCurrentRow);
    connect(table_, &QTableWidget::itemSelectionChanged, remove,
            [this, remove] { remove->setEnabled(!table_->selectedItems().isEmpty()); });

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(add);
    buttons->addWidget(remove);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(4, 2, 4, 4);
    rows->addWidget(table_);
    rows->addLayout(buttons);
}

int PropertyTable::rowOf(const QString& name) const {
    for (int row = 0; row < table_->rowCount(); ++row) {
        if (table_->item(row, NameColumn)->text() == name) {
            return row;
        }
    }
    return -1;
}

std::optional<QString> PropertyTable::valueOf(const QString& name) const {
    const int row = rowOf(name);
    if (row < 0) {
        return std::nullopt;
    }
    return table_->item(row, ValueColumn)->text();
}

void PropertyTable::setValue(const QString& name, const QString& value) {
    const int row = rowOf(name);
    if (row < 0) {
        addRow(name, value);
    } else {
        table_->item(row, ValueColumn)->setText(value);
    }
}

void PropertyTable::addRow(const QString& name, const QString& value) {
    const int row = table_->rowCount();
    table_->insertRow(row);
    table_->setItem(row, NameColumn, new QTableWidgetItem(name));
    table_->setItem(row, ValueColumn, new QTableWidgetItem(value));
}

void PropertyTable::addEmptyRow() {
    addRow({}, {});
    QTableWidgetItem* name = table_->item(table_->rowCount() - 1, NameColumn);
    table_->setCurrentItem(name);
    table_->editItem(name);
}

void PropertyTable::removeCurrentRow() {
    table_->removeRow(table_->currentRow());
}

}  // namespace varo::host
