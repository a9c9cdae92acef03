#include "host/line_list.h"

#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace varo::host {

LineList::LineList(QWidget* parent) : QWidget(parent), list_(new QListWidget(this)) {
    list_->setObjectName(QStringLiteral("lines"));
    list_->setSelectionMode(QAbstractItemView::ContiguousSelection);
    auto* clear = new QPushButton(QStringLiteral("清除"), this);
    clear->setObjectName(QStringLiteral("clear"));
    clear->setEnabled(false);
    connect(clear, &QPushButton::clicked, this, [this, clear] {
        list_->clear();
        clear->setEnabled(false);
    });
    connect(list_->model(), &QAbstractItemModel::rowsInserted, clear,
            [clear] { clear->setEnabled(true); });

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(4, 2, 4, 4);
    rows->addWidget(list_);
    rows->addWidget(clear, 0, Qt::AlignRight);
}

void LineList::append(const QString& line) {
    list_->addItem(line);
    list_->scrollToBottom();
}

QStringList LineList::lines() const {
    QStringList texts;
    for (int row = 0; row < list_->count(); ++row) {
        texts.append(list_->item(row)->text());
    }
    return texts;
}

}  // namespace varo::host
