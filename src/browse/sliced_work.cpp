#include "browse/sliced_work.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>

namespace varo {

void SlicedWork::start() {
    timer_.start(0, this);
    // The window may be another one later.
    qApp->installEventFilter(this);
}

void SlicedWork::stop() {
    if (isRunning()) {
        timer_.stop();
        qApp->removeEventFilter(this);
        emit ended();
    }
}

void SlicedWork::timerEvent(QTimerEvent*) {
    constexpr int kSlice = 50;   // milliseconds
    constexpr int kPause = 100;  // milliseconds
    QElapsedTimer sinceStart;
    sinceStart.start();
    Next next = Next::AtOnce;
    while (next == Next::AtOnce && isRunning() && sinceStart.elapsed() < kSlice) {
        next = step_();
    }
    if (next == Next::Never) {
        stop();
    } else if (isRunning()) {
        timer_.start(next == Next::Later ? kPause : 0, this);
    }
}

bool SlicedWork::eventFilter(QObject* watched, QEvent* event) {
    if (watched != widget_.window()) {
        return false;
    }
    switch (event->type()) {
        case QEvent::Hide:
            if (!event->spontaneous()) {  // as for a window that is made an icon
                stop();
            }
            return false;
        // Both come to the window when no widget inside it uses them.
        case QEvent::ShortcutOverride:
        case QEvent::KeyPress: {
            const auto& key = static_cast<const QKeyEvent&>(*event);
            if (key.key() != Qt::Key_Escape || key.modifiers() != Qt::NoModifier) {
                return false;
            }
            event->accept();
            if (event->type() == QEvent::KeyPress) {
                stop();
            }
            return true;
        }
        default:
            return false;
    }
}

}  // namespace varo
