#include "search/find_run.h"

#include <QDeadlineTimer>
#include <QTimerEvent>

#include <utility>

namespace varo {

namespace {

/// Hits that are read before the time is looked at.
constexpr int kHitsAtOnce = 1000;

}  // namespace

FindRun::FindRun(FindResults& results, QObject* parent) : QObject(parent), results_(results) {
    connect(&results, &FindResults::librariesChanged, this, &FindRun::stop);
}

void FindRun::start(std::unique_ptr<NodeSearch> search) {
    stop();
    search_ = std::move(search);
    search_->setPatience(std::chrono::milliseconds(slice_));
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
    FindHits hits;
    bool goesOn = true;
    do {
        goesOn = search_->advance(kHitsAtOnce, hits);
        results_.append(hits);
        hits.clear();
    } while (goesOn && !deadline.hasExpired());
    search_->pause();
    return goesOn;
}

void FindRun::end() {
    timer_.stop();
    waiting_.reset();
    search_->stop();
    emit ended();
}

}  // namespace varo
