#pragma once

#include "platform/data/access/relationships.h"

namespace varo::access {

/// A relationship that is to be created between tables that are there.
struct NewRelationship {
    QString name{};
    QString table{};  ///< which refers to the other one, with the columns of this index of it
    QString index{};
    QString referencedTable{};
    QString referencedIndex{};  ///< a unique one with as many columns
    bool isFollowing = false;   ///< see Relationship
    Relationship::OnRemoval onRemoval = Relationship::OnRemoval::Refuse;
};

/// Adds the relationship to the definitions of its tables and to the file's table of relationships.
/// The file is being written. Rows are not checked. Throws data::Error and changes nothing when one
/// of the names is not there.
void createRelationship(PageFile& file, const NewRelationship& relationship);

}  // namespace varo::access
