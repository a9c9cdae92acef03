#include "search/find_run.h"

#include <QDeadlineTimer>
#include <QTimerEvent>

#include <utility>

namespace varo {

namespace {

/// Hits that are read before the time is looked at.
constexpr int kHitsAtOnce = 1000;

/// Milliseconds after which hits are shown at the latest. Views lay out all of their rows anew for
/// new ones, which is done seldom while there are many.
constexpr int kLongestUnseen = 500;

}  // namespace

FindRun::FindRun(FindResults& results, QObject* parent) : QObject(parent), results_(results) {
    connect(&results, &FindResults::librariesChanged, this, [this] {
        found_.clear();
        stop();
    });
}

void FindRun::start(std::unique_ptr<NodeSearch> search) {
    stop();
    search_ = std::move(search);
    sinceShown_.start();
    search_->setPatience(std::chrono::milliseconds(slice_ / 2));
    waiting_.emplace();
    if (runSlice()) {
        timer_.start(0, this);
        emit progressed();
    } else {
        end();
    }
}

void FindRun::stop() {
    if (isRunning()) {
        end();
    }
}

void FindRun::timerEvent(QTimerEvent* event) {
    if (event->timerId() != timer_.timerId()) {
        QObject::timerEvent(event);
    } else if (runSlice()) {
        emit progressed();
    } else {
        end();
    }
}

bool FindRun::runSlice() {
    const QDeadlineTimer deadline(slice_);
    bool goesOn = true;
    do {
        goesOn = search_->advance(kHitsAtOnce, found_);
    } while (goesOn && !deadline.hasExpired());
    search_->pause();
    if (found_.size() >= static_cast<std::size_t>(results_.count()) ||
        sinceShown_.hasExpired(kLongestUnseen)) {
        showFound();
    }
    return goesOn;
}

void FindRun::showFound() {
    results_.append(found_);
    found_.clear();
    sinceShown_.start();
}

void FindRun::end() {
    timer_.stop();
    waiting_.reset();
    search_->stop();
    showFound();
    emit ended();
}

}  // namespace varo
