#pragma once

#include "platform/data/access/table_definition.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace varo::access {

/// The fields of a row, in the order of the table's columns; nothing for NULL and for no.
using Fields = std::vector<std::optional<QByteArray>>;

/// The bytes of a row with these fields. Throws data::Error when they do not fit on a page.
QByteArray encodeRow(const TableDefinition& table, const Fields& fields);

}  // namespace varo::access
