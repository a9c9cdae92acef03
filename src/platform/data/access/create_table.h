#pragma once

#include "platform/data/access/new_table.h"

namespace varo::access {

/// Adds an empty table with its indexes to the file, which is being written, and to its catalog; a
/// primary key is unique and requires values. What the columns demand is stated in the catalog as
/// the Access program does it. Throws data::Error and changes nothing when the table is not
/// possible or there is one with its name.
void createTable(PageFile& file, const NewTable& table);

/// Writes the definition of an empty table with its maps and indexes as it is described, the first
/// page of it onto `page`. The catalog does not know it yet.
void defineTable(PageFile& file, PageNumber page, const NewTable& table);

/// Puts the bytes of a definition onto `page` and as many further ones as it needs.
void writeDefinition(PageFile& file, PageNumber page, const QByteArray& definition);

}  // namespace varo::access
