#pragma once

#include "control/state.h"

namespace varo {

/// Evaluates the stored conditions of one library against the host's values.
class Condition {
  public:
    /// Everything handed in must outlive this; `state` lends the connection to the library.
    Condition(ControlState& state, PropertySource& properties)
        : state_(state), properties_(properties) {}

    /// Puts the value of the condition `filterID` into `result`; a condition without rows leaves it
    /// as it is. The value of a condition is that of its last root. Returns false when it cannot be
    /// read or is nested deeper than MaxDepth.
    bool evaluate(qint32 filterID, bool& result) {
        return evaluateChildren(filterID, 0, 0, 0, result);
    }

    /// Deepest nesting; a condition that contains itself is deeper than any.
    static constexpr int MaxDepth = 100;

  private:
    bool evaluateChildren(qint32 filterID, qint32 parentID, int parentType, int depth,
                          bool& result);
    bool evaluateLeaf(qint32 filterID, qint32 expressionID, bool& result);

    ControlState& state_;
    PropertySource& properties_;
};

}  // namespace varo
