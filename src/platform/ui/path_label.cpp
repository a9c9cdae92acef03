#include "platform/ui/path_label.h"

#include "platform/ui/shown_text.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

namespace varo::ui {

PathLabel::PathLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize PathLabel::minimumSizeHint() const {
    return {0, fontMetrics().height()};
}

QSize PathLabel::sizeHint() const {
    constexpr int kWidest = 240;
    return {std::min(fontMetrics().horizontalAdvance(text()) + 1, kWidest), fontMetrics().height()};
}

QString PathLabel::shown() const {
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, width());
}

bool PathLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const bool isCut = shown() != text();
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                           isCut ? plainToolTip(text()) : QString(), this);
        return true;
    }
    return QLabel::event(event);
}

void PathLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    style()->drawItemText(&painter, rect(), Qt::AlignLeft | Qt::AlignVCenter, palette(),
                          isEnabled(), shown(), foregroundRole());
}

}  // namespace varo::ui
