#pragma once

#include <QString>

namespace varo::data {

/// `name`, whatever characters it has, as the name of a table or column in a statement.
QString quoted(const QString& name);

}  // namespace varo::data
