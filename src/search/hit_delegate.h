#pragma once

#include <QStyledItemDelegate>

namespace varo {

/// Draws a hit in two lines: its name, and below it, quieter, where it is.
class HitDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};

}  // namespace varo
