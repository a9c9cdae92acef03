#pragma once

#include "platform/data/access/table_definition.h"

#include <QByteArray>

#include <utility>

namespace varo::access {

/// Whether the fields of a column are whole numbers for which there are keys.
bool hasNumberKey(const Column& column);

/// The least and the largest number that such a field can have.
std::pair<qint64, qint64> numberRange(const Column& column);

/// Appends to `key` what an index has for a field with this number, whose column is of a type with
/// whole numbers; false when the column's type has no such number, or none so large.
bool appendNumberKey(const Column& column, bool isDescending, qint64 number, QByteArray& key);

}  // namespace varo::access
