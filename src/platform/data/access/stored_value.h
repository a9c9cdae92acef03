#pragma once

#include "platform/data/access/value.h"

#include <optional>

namespace varo::access {

/// The bytes that a file of the versions that are written has for a field with this value:
/// nothing for NULL and for no, none for yes. For a memo or OLE column it is the whole value, which
/// LongValueWriter takes.
///
/// Numbers, and texts that are numbers, become such of the column's type; a text that is a date as
/// fieldValue() writes it, or "2000-12-31" alone, a date; numbers become texts, and
/// an empty text no bytes. Throws data::Error
/// that names the column when the value does not fit: it is out of the type's range, a fraction for
/// whole numbers, has more digits or characters than the column, or is of another kind.
std::optional<QByteArray> storedValue(const Value& value, const Column& column);

}  // namespace varo::access
