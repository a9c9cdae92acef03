#pragma once

#include "platform/data/access/relationship_format.h"
#include "platform/data/access/table_definition.h"

#include <optional>
#include <vector>

namespace varo::access {

/// A table of a file with its name. The definition outlives it.
struct NamedTable {
    QString name;
    const TableDefinition* definition = nullptr;
};

/// A table of a relationship and the index of its columns.
struct RelationshipSide {
    NamedTable table;
    std::size_t index = 0;

    const Index& keys() const { return table.definition->indexes[index]; }

    /// The columns of the key, in the order of those of the other side.
    std::vector<const Column*> columns() const;
};

/// What is to hold between two tables, which may be the same: each row of the referencing one whose
/// key is not NULL has a row with this key in the other one.
struct Relationship {
    /// What happens to the referencing rows when the row to which they refer is removed.
    enum class OnRemoval : quint8 { Refuse = 0, Remove = kCascade, SetNull = kSetNull };

    RelationshipSide referencing;
    RelationshipSide referenced;
    bool isFollowing = false;  ///< referencing rows get the new key of a row that is changed
    OnRemoval onRemoval = OnRemoval::Refuse;
};

/// The flags that the file's table of relationships has for what the index says; nothing when that
/// is not understood.
std::optional<quint32> flagsOf(const ForeignIndex& index);

/// The relationships of `table` that the file is to enforce; `tables` are the tables of the file
/// that can be read. What the definitions of the tables say of them must be the same as what the
/// file's table of relationships says; nothing when it is not, or not all of it is understood.
/// Throws data::Error when the catalog or that table is damaged.
std::optional<std::vector<Relationship>> relationshipsOf(PageFile& file, const NamedTable& table,
                                                         const std::vector<NamedTable>& tables);

}  // namespace varo::access
