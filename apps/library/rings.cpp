#include "library/rings.h"

#include <QHash>

#include <algorithm>

namespace varo {

namespace {

/// Goes from each identifier to what it is in, depth first, without recursion.
class Walk {
  public:
    Walk(const std::vector<Inside>& pairs, std::size_t most) : pairs_(pairs), most_(most) {}

    std::vector<Ring> run() {
        for (const Inside& pair : pairs_) {
            if (!places_.contains(pair.first)) {
                enter(pair.first);
                while (!path_.empty() && rings_.size() < most_) {
                    advance();
                }
            }
        }
        return std::move(rings_);
    }

  private:
    struct Step {
        qint32 id;
        std::vector<Inside>::const_iterator next;  ///< the pair to follow next
    };

    static constexpr qsizetype kDone = -1;

    void enter(qint32 id) {
        places_.insert(id, static_cast<qsizetype>(path_.size()));
        path_.push_back({id, std::ranges::lower_bound(pairs_, id, {}, &Inside::first)});
    }

    void advance() {
        Step& step = path_.back();
        if (step.next == pairs_.end() || step.next->first != step.id) {
            places_[step.id] = kDone;
            path_.pop_back();
            return;
        }
        const qint32 above = (step.next++)->second;
        const auto place = places_.constFind(above);
        if (place == places_.constEnd()) {
            enter(above);
        } else if (*place != kDone) {
            addRing(static_cast<std::size_t>(*place));
        }
    }

    /// The ring of the identifiers from `first` on in the path.
    void addRing(std::size_t first) {
        Ring ring{{path_[first].id}, path_.size() - first};
        for (std::size_t at = path_.size() - 1;
             at > first && ring.members.size() < Ring::kMostMembers; --at) {
            ring.members.push_back(path_[at].id);
        }
        rings_.push_back(std::move(ring));
    }

    const std::vector<Inside>& pairs_;
    std::size_t most_;
    std::vector<Step> path_;
    QHash<qint32, qsizetype> places_;  ///< in the path, or kDone
    std::vector<Ring> rings_;
};

}  // namespace

std::vector<Ring> ringsAmong(std::vector<Inside> pairs, std::size_t most) {
    std::ranges::sort(pairs);
    pairs.erase(std::ranges::unique(pairs).begin(), pairs.end());
    return Walk(pairs, most).run();
}

}  // namespace varo
