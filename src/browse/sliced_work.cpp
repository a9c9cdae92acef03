#include "browse/sliced_work.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>

namespace varo {

void SlicedWork::start() {
    timer_.start(0, this);
    qApp->installEventFilter(this);
}

void SlicedWork::stop() {
    timer_.stop();
    qApp->removeEventFilter(this);
}

void SlicedWork::timerEvent(QTimerEvent*) {
    constexpr int kSlice = 50;  // milliseconds
    QElapsedTimer sinceStart;
    sinceStart.start();
    while (sinceStart.elapsed() < kSlice) {
        if (!step_()) {
            stop();
            return;
        }
    }
}

bool SlicedWork::eventFilter(QObject* watched, QEvent* event) {
    const bool isEscape = event->type() == QEvent::KeyPress &&
                          static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Escape;
    if (isEscape || (event->type() == QEvent::Close && watched == widget_.window())) {
        stop();
    }
    return false;
}

}  // namespace varo
