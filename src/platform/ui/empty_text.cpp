#include "platform/ui/empty_text.h"

#include <QAbstractItemView>
#include <QPainter>

namespace varo::ui {

void paintEmptyText(QAbstractItemView& view, const QString& text) {
    if (view.model() == nullptr || view.model()->rowCount() > 0 || text.isEmpty()) {
        return;
    }
    QPainter painter(view.viewport());
    painter.setPen(view.palette().color(QPalette::PlaceholderText));
    constexpr int kMargin = 12;
    painter.drawText(view.viewport()->rect().adjusted(kMargin, kMargin, -kMargin, -kMargin),
                     Qt::AlignCenter | Qt::TextWordWrap, text);
}

}  // namespace varo::ui
