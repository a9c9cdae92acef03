#pragma once

#include "platform/data/access/new_table.h"

namespace varo {

/// The tables of a library in an Access file, with the indexes that the statements need. No index
/// is of texts: the order of some characters is not known, and a row that has them could not be
/// stored.
QList<access::NewTable> accessLibraryTables();

}  // namespace varo
