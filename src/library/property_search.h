#pragma once

#include "library/property_source.h"
#include "platform/data/connection.h"
#include "store/collections.h"
#include "store/db_funcs.h"

namespace varo {

/// Adds to `located` what carries a property called `property` in the open library with this key
/// and suits the host's values: formulas before folders; what has a condition only if that holds.
/// Returns what the user is to be told when a step fails; "" otherwise.
QString locateByProperty(const QString& property, const QString& libraryKey,
                         data::Connection& connection, clsDBFuncs& funcs,
                         PropertySource& properties, colLocateProp& located);

}  // namespace varo
