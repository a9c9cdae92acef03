#pragma once

#include "platform/data/access/row.h"

#include <QByteArray>

#include <variant>

namespace varo::access {

/// A text in UTF-8.
struct Text {
    QByteArray utf8;
};

/// What a field holds, as statements see it; std::monostate is NULL.
using Value = std::variant<std::monostate, qint64, double, Text, QByteArray>;

/// The value of a field of a row:
/// - yes is 1, no 0;
/// - a number of single precision is the double of the shortest decimal that reads back as it;
/// - money and decimals are numbers where the number reads back as their digits, else the text of
///   these; NaN is NULL, as SQLite has none;
/// - a date is the text "2000-12-31 23:59:59", of an extended one with seven decimals, a GUID the
///   text "{00000000-0000-0000-0000-000000000000}";
/// - an attachment, a field of many values and a computed decimal are NULL.
/// Throws data::Error when the field is damaged.
Value fieldValue(PageFile& file, const Row& row, const Column& column);

}  // namespace varo::access
