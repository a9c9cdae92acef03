#pragma once

#include "platform/ui/wait_cursor.h"
#include "search/find_results.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>

#include <memory>
#include <optional>

namespace varo {

/// Runs a search in slices, between which the program goes on, and puts what it finds into the
/// results. It shows the wait cursor meanwhile.
class FindRun : public QObject {
    Q_OBJECT

  public:
    /// `results` must outlive this.
    FindRun(FindResults& results, QObject* parent);

    /// Runs a search; one that is under way ends. A short search has ended when this returns.
    void start(std::unique_ptr<NodeSearch> search);

    /// Ends the search under way, if any; what it has found stays.
    void stop();

    bool isRunning() const { return timer_.isActive(); }
    /// The search under way, or the last one; null before the first.
    const NodeSearch* search() const { return search_.get(); }

    /// Hits so far; the results may get them a little later.
    int count() const { return results_.count() + static_cast<int>(found_.size()); }

    /// Milliseconds for which the program does not go on meanwhile, not negative; for the searches
    /// that are started from then on.
    void setSlice(int milliseconds) { slice_ = milliseconds; }

  signals:
    /// A slice is over and the search goes on.
    void progressed();
    /// The search is over: at its end, by a failure, or because it was stopped.
    void ended();

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    bool runSlice();
    void showFound();
    void end();

    FindResults& results_;
    std::unique_ptr<NodeSearch> search_;
    std::optional<ui::clsWaitCursor> waiting_;
    FindHits found_;  ///< that are not in the results yet
    QElapsedTimer sinceShown_;
    QBasicTimer timer_;
    int slice_ = 100;
};

}  // namespace varo
