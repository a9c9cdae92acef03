#pragma once

#include "library/condition_tree.h"
#include "library/property_source.h"
#include "platform/data/connection.h"
#include "store/db_funcs.h"

namespace varo {

/// Evaluates the stored conditions of one library against the host's values.
class Condition {
  public:
    /// `connection` is open on the library. Everything handed in must outlive this.
    Condition(data::Connection& connection, clsDBFuncs& funcs, PropertySource& properties)
        : connection_(connection), funcs_(funcs), properties_(properties) {}

    /// Puts the value of the condition `filterID` into `result`; a condition without rows leaves it
    /// as it is. The value of a condition is that of its last root. Returns false when it cannot be
    /// read or is nested deeper than kMaxDepth.
    bool evaluate(qint32 filterID, bool& result) {
        return evaluateChildren(filterID, 0, {}, 0, result);
    }

    /// Deepest nesting; a condition that contains itself is deeper than any.
    static constexpr int kMaxDepth = 100;

  private:
    bool evaluateChildren(qint32 filterID, qint32 parentID, ConditionType parentType, int depth,
                          bool& result);
    bool evaluateLeaf(qint32 filterID, qint32 expressionID, bool& result);

    data::Connection& connection_;
    clsDBFuncs& funcs_;
    PropertySource& properties_;
};

}  // namespace varo
