#pragma once

#include <QBasicTimer>
#include <QObject>
#include <QWidget>

#include <functional>

namespace varo {

/// Work that is done in slices, between which the program goes on. It ends when its window is
/// hidden, and by Escape where no widget that has the focus, nor one around it, uses that key:
/// shortcuts of the program and the window itself then do not get it.
class SlicedWork : public QObject {
    Q_OBJECT

  public:
    /// When the next part of the work is to be done.
    enum class Next { AtOnce, Later, Never };

    /// `step` does a part of the work. `widget`, in whose window the work is shown, must outlive
    /// this.
    SlicedWork(QWidget& widget, std::function<Next()> step)
        : widget_(widget), step_(std::move(step)) {}

    /// Goes on with the work from the next time on that the program handles events.
    void start();

    void stop();

    bool isRunning() const { return timer_.isActive(); }

  signals:
    /// The work is over, or has been stopped.
    void ended();

  protected:
    void timerEvent(QTimerEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QWidget& widget_;
    std::function<Next()> step_;
    QBasicTimer timer_;
};

}  // namespace varo
