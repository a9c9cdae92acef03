#pragma once

#include "platform/data/access/create_table.h"
#include "platform/data/access/format.h"

#include <QString>

namespace varo::access {

/// Creates an Access file without tables of users, of version Jet4 (.mdb) or Ace12 (.accdb, which
/// Access 2007 and later read), with texts in the general sort order of these versions. Throws
/// data::Error when there is anything at `path` or it cannot be written; there is no file then, and
/// never one that is not whole.
void createFile(const QString& path, Version version);

}  // namespace varo::access
