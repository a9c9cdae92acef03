#pragma once

#include "platform/data/connection.h"
#include "store/attempt.h"

namespace varo {

/// Opens `rs` on the result of a query, closed when that fails.
inline bool list(data::Recordset& rs, data::Connection& conn, const QString& statement,
                 const data::Arguments& arguments = {}) {
    rs.close();
    return attempt([&] { rs = conn.query(statement, arguments); });
}

/// Runs a statement that changes data.
inline bool change(data::Connection& conn, const QString& statement,
                   const data::Arguments& arguments) {
    return attempt([&] { conn.execute(statement, arguments); });
}

}  // namespace varo
