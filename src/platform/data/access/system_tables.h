#pragma once

#include "platform/data/access/catalog_writer.h"
#include "platform/data/access/new_table.h"

#include <vector>

namespace varo::access {

// What a new file has before a user adds a table.

/// What one user or group may do with an object.
struct SystemRight {
    KnownUser user;
    quint32 mask;
    bool isInherited = false;
};

struct SystemObject {
    NewObject object;
    std::vector<SystemRight> rights;
};

/// A table that holds fields of many values, or is the pattern for one.
struct ComplexTable {
    NewTable table;
    quint32 flags;
};

inline constexpr quint32 kAdministers = 0x60000;
inline constexpr quint32 kReads = 0x14;

/// The catalog, the tables of rights, queries and relationships, in the order of their pages.
std::vector<NewTable> systemTables();

/// Their rows in the catalog, with those of the objects above them.
std::vector<SystemObject> systemObjects();

/// Those that files of version Ace12 and later have besides.
std::vector<ComplexTable> complexTables();

}  // namespace varo::access
