#pragma once

#include "library/condition_rows.h"
#include "library/property_source.h"

namespace varo {

/// Evaluates stored conditions of one library against the host's values.
class Condition {
  public:
    /// `connection` is open on the library, whose conditions `filters` can be evaluated. Everything
    /// handed in but `filters` must outlive this.
    Condition(data::Connection& connection, PropertySource& properties,
              const QList<qint32>& filters)
        : rows_(connection, filters), properties_(properties) {}

    /// Puts the value of the condition `filterID` into `result`; a condition without rows leaves it
    /// as it is. The value of a condition is that of its last root. Takes a time linear in the
    /// rows, also where identifiers are used twice, and asks the host once for each comparison.
    /// Returns false when it cannot be read, contains itself or is nested deeper than kMaxDepth.
    bool evaluate(qint32 filterID, bool& result);

    static constexpr int kMaxDepth = 100;

  private:
    ConditionRows rows_;
    PropertySource& properties_;
};

}  // namespace varo
