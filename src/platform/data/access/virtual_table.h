#pragma once

#include "platform/data/access/catalog.h"
#include "platform/data/access/page_file.h"

#include <sqlite3.h>
#include <vector>

namespace varo::access {

/// The name of the column, beside the one with this name, that holds the length of its long value.
/// It reads none of the value.
QString lengthColumn(const QString& column);

/// A table of a file that SQLite is to see.
struct SeenTable {
    CatalogEntry entry;
    TableDefinition definition;
    QString damage;  ///< what is wrong with the definition, which then has no columns
};

/// Makes the tables of a file seen as tables of `database`, under their names. `file` and `tables`
/// must outlive `database`. A table whose names are impossible there is
/// left out, with that as its damage. Throws data::Error when no table can be made.
void showTables(sqlite3* database, PageFile& file, std::vector<SeenTable>& tables);

}  // namespace varo::access
