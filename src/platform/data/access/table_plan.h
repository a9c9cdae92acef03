#pragma once

#include "platform/data/access/table_definition.h"

#include <sqlite3.h>

namespace varo::access {

/// How a statement finds the rows of a table. The number of an index stands
/// above the bits that say which values there are for its first column.
enum Plan : int {
    kWholeTable = 0,
    kRowNumber = 1,
    kByIndex = 2,
    kKind = 3,  ///< the bits of the above
    kEqual = 4,
    kAbove = 8,   ///< not below the value
    kBelow = 16,  ///< not above the value
    kIs = 32,     ///< with kEqual: NULL equals NULL
    kIndexShift = 8,
};

/// Chooses the plan for the conditions and the order in `info`, and tells SQLite which values it
/// takes, in the order of the bits, and what it costs.
void choosePlan(const TableDefinition& table, sqlite3_index_info& info);

}  // namespace varo::access
