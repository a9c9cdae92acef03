#pragma once

#include "platform/data/connection.h"

namespace varo {

/// True when the tables of the file keep what the operations store in them: folders and formulas
/// are numbered by the database, texts and numbers are stored as given, a change of a row changes
/// nothing else, and nothing that the file says is evaluated. Tables and columns that are missing
/// do not count. Throws data::Error when the file cannot be read.
bool keepsRows(data::Connection& connection);

}  // namespace varo
