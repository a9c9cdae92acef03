#pragma once

#include "library/library_rows.h"
#include "library/text_entry.h"
#include "platform/data/connection.h"

#include <QSet>

#include <map>
#include <vector>

namespace varo {

/// Adds the rows of the conditions that [[property]] tables have as lines of text. `properties` are
/// these tables, in the order of `rows.properties`; everything that is given as rows is in `rows`
/// already. A property with a condition and no filter gets the next number. Throws TextError with
/// the place.
void addConditionLines(const std::vector<Entry>& properties, LibraryRows& rows);

/// A condition that a dump writes as a line.
struct ConditionLine {
    QString text;
    qint32 firstId = 0;  ///< identifier of its first row; the others follow
    qint32 lastId = 0;
};

/// The filters of a library whose rows addConditionLines() makes again from a line, by their
/// number; only those that a property has. Throws data::Error.
std::map<qint32, ConditionLine> conditionLines(data::Connection& connection);

}  // namespace varo
