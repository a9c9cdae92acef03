#include "platform/ui/focus_label.h"

#include <QPainter>

namespace varo::ui {

void paintFocus(QPainter& painter, const QWidget& widget) {
    if (widget.hasFocus()) {
        // Some styles fill their focus frames, and would change the colors of what is shown.
        painter.setPen(
            QPen(widget.palette().highlight(), 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(widget.rect().adjusted(1, 1, -1, -1));
    }
}

void FocusLabel::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    QPainter painter(this);
    paintFocus(painter, *this);
}

}  // namespace varo::ui
