#pragma once

#include "platform/data/connection.h"

namespace varo {

/// The order of the rows of one parent in a table with the columns ID, PID and OrderID ("Tree" or
/// "Formula"): by OrderID, then in the order in which they were inserted. The rules are stated in
/// db_funcs.h. Both throw data::Error and are to be called inside a transaction.

/// Gives the rows with parent `PID` the order numbers 1, 2, 3 ... in the order that they have.
void renumberSiblings(const QString& table, qint32 PID, data::Connection& conn);

/// Exchanges the places of two rows with the same parent, and the order numbers of others. Throws
/// data::Error when a row is missing.
void exchangePlaces(const QString& table, qint32 ID1, qint32 ID2, data::Connection& conn);

}  // namespace varo
