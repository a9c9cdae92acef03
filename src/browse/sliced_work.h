#pragma once

#include <QBasicTimer>
#include <QObject>
#include <QWidget>

#include <functional>

namespace varo {

/// Work that is done in slices, between which the program goes on. Escape ends it, whatever has the
/// focus, and so does closing the window.
class SlicedWork : public QObject {
    Q_OBJECT

  public:
    /// `step` does a part of the work and returns whether there is more. `widget`, in whose window
    /// the work is shown, must outlive this.
    SlicedWork(QWidget& widget, std::function<bool()> step)
        : widget_(widget), step_(std::move(step)) {}

    /// Goes on with the work from the next time on that the program handles events.
    void start();

    void stop();

    bool isRunning() const { return timer_.isActive(); }

  protected:
    void timerEvent(QTimerEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QWidget& widget_;
    std::function<bool()> step_;
    QBasicTimer timer_;
};

}  // namespace varo
