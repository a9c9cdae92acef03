#pragma once

#include "platform/data/connection.h"

namespace varo {

/// True when the tables of the file keep what the operations store in them: folders and formulas
/// are numbered by the database, texts and numbers are stored as given, and a change of a row
/// changes nothing else. Tables and columns that are missing do not count. Throws data::Error when
/// the file cannot be read.
bool keepsRows(data::Connection& connection);

}  // namespace varo
