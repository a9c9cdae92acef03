#pragma once

#include "platform/data/access/table_definition.h"
#include "platform/data/access/value.h"

#include <optional>

namespace varo::access {

/// What a new row has in `column` where nothing is given, by the expression that the table states
/// as the column's default: a number, a text in quotes, Yes, No, True, False, On, Off, Null, and of
/// a column of dates Now(), Date() and Time(), each with or without "=" before it. Nothing when it
/// is another expression, or one that has no such value in this column.
std::optional<Value> defaultValue(const QString& expression, const Column& column);

}  // namespace varo::access
