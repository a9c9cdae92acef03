#pragma once

#include "library/stored_condition.h"
#include "platform/data/connection.h"

#include <optional>

namespace varo {

/// Reads and writes the filters of one library: each a condition, known by its FilterID. What is
/// written is written in one transaction, read again before it becomes final, and not at all when a
/// step fails. Shows nothing.
class FilterStore {
  public:
    /// `connection` is open on the library; it must outlive this.
    explicit FilterStore(data::Connection& connection) : connection_(connection) {}

    /// The filter; one that has no rows is an empty tree. Nothing when it cannot be read.
    std::optional<StoredCondition> read(qint32 filterID);

    /// Puts `tree` in the place of everything that is stored of the filter, with new identifiers
    /// beyond all that the tables hold. False, with nothing changed, when it cannot be written, the
    /// tree has faults or `filterID` is 0.
    bool saveOver(qint32 filterID, const ConditionTree& tree);

    /// Stores `tree` as a new filter and returns its FilterID, beyond all that filters and
    /// properties have; nothing as in saveOver(). `beyond` is a number that is in use elsewhere.
    std::optional<qint32> saveNew(const ConditionTree& tree, qint32 beyond = 0);

    /// Removes everything that is stored of the filter. False, with nothing changed, when that
    /// fails; a filter without rows is removed.
    bool remove(qint32 filterID);

  private:
    void removeRows(qint32 filterID);
    void insertRows(qint32 filterID, const ConditionTree& tree);
    qint32 nextNumber(const char* query, qint32 beyond);

    data::Connection& connection_;
};

}  // namespace varo
