#pragma once

#include <QLabel>

namespace varo::ui {

/// Draws a frame along the edges of a widget that has the focus; for the end of its paintEvent.
void paintFocus(QPainter& painter, const QWidget& widget);

/// A label that shows whether it has the focus.
class FocusLabel : public QLabel {
    Q_OBJECT

  public:
    using QLabel::QLabel;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace varo::ui
