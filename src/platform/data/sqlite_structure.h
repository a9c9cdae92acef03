#pragma once

#include "platform/data/table_structure.h"

#include <QStringList>

#include <optional>
#include <sqlite3.h>

namespace varo::data {

/// How `database` keeps the table with this name, letter case ignored; nothing when there is none.
/// Throws Error when that cannot be told.
std::optional<TableStructure> tableStructure(sqlite3* database, const QString& table);

/// Names of its tables, in the order in which they were made, without views, virtual tables and
/// what SQLite or a virtual table keeps for itself. Throws Error when that cannot be told.
QStringList tableNames(sqlite3* database);

}  // namespace varo::data
