#pragma once

#include "platform/data/access/new_table.h"

namespace varo::access {

/// Where the parts of a new table are.
struct TablePlaces {
    struct Tree {
        PageNumber root = 0;
        RowPlace pages;
    };

    RowPlace ownedPages;
    RowPlace pagesWithRoom;
    std::vector<LongValuePages> longValuePages;
    std::vector<Tree> trees;  ///< of the table's indexes, in their order
};

/// The definition of a table without rows, as a file of version Jet4 or later with this header has
/// it; the numbers of its further pages are missing. The table is one that requireValid() accepts.
QByteArray encodeDefinition(const Header& header, const NewTable& table, const TablePlaces& places);

/// What stands in a definition for a relationship, and for the name of a column or an index.
QByteArray foreignIndexEntry(const Layout& layout, const ForeignIndex& index);
QByteArray nameEntry(const QString& name);

/// The columns of the table that have long values, in the order of their numbers.
std::vector<int> longValueColumns(const NewTable& table);

}  // namespace varo::access
