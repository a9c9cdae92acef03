#pragma once

#include "platform/data/access/table_definition.h"

#include <QByteArray>

#include <vector>

namespace varo::access {

/// A table of the file.
struct CatalogEntry {
    QString name;
    PageNumber page = 0;  ///< of its definition
    bool operator==(const CatalogEntry&) const = default;
};

/// The tables that users made, in the order of the file's catalog; not its own ones, queries and
/// tables of other files. Throws data::Error when the catalog is damaged.
std::vector<CatalogEntry> userTables(PageFile& file);

/// All tables that are in the file, with its own ones.
std::vector<CatalogEntry> allTables(PageFile& file);

/// The definition of the Access program's own table with this name; nothing when there is none.
/// Throws data::Error when the catalog is damaged.
std::optional<PageNumber> systemTable(PageFile& file, QStringView name);

/// What the catalog says of a table besides its name.
struct TableDetails {
    QByteArray properties;  ///< the lists of them; empty when there are none
    bool hasMacros = false;
};

/// The details of the table whose definition begins on `page`; none when the catalog lacks it.
/// Throws data::Error when the catalog is damaged.
TableDetails tableDetails(PageFile& file, PageNumber page);

}  // namespace varo::access
