#pragma once

#include <QLabel>

namespace varo::ui {

/// A label for a path or another long text: cut in the middle where it does not fit, and then shown
/// whole as its tool tip. It never makes its window wider.
class PathLabel : public QLabel {
    Q_OBJECT

  public:
    explicit PathLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QString shown() const;
};

}  // namespace varo::ui
