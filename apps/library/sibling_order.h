#pragma once

#include <QHash>
#include <QtGlobal>

namespace varo {

/// The order number that a folder or formula gets when its text gives none: 1 for the first below a
/// parent, then 1 more than the largest below that parent so far.
class SiblingOrder {
  public:
    /// The number that the next one below `parent` gets; outside 32 bits when there is none left.
    qint64 next(qint32 parent) const;

    /// Notes that there is one with this number below `parent`.
    void note(qint32 parent, qint32 order);

  private:
    QHash<qint32, qint32> largest_;
};

}  // namespace varo
