#include "library/sibling_order.h"

#include <algorithm>

namespace varo {

qint64 SiblingOrder::next(qint32 parent) const {
    return qint64(largest_.value(parent, 0)) + 1;
}

void SiblingOrder::note(qint32 parent, qint32 order) {
    const auto known = largest_.constFind(parent);
    largest_.insert(parent, known == largest_.constEnd() ? order : std::max(*known, order));
}

}  // namespace varo
