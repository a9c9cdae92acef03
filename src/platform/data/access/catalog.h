#pragma once

#include "platform/data/access/table_definition.h"

#include <vector>

namespace varo::access {

/// A table of the file.
struct CatalogEntry {
    QString name;
    PageNumber page = 0;  ///< of its definition
};

/// The tables that users made, in the order of the file's catalog; not its own ones, queries and
/// tables of other files. Throws data::Error when the catalog is damaged.
std::vector<CatalogEntry> userTables(PageFile& file);

}  // namespace varo::access
