#pragma once

#include "platform/ui/edit_grid.h"

#include <QLineEdit>
#include <QString>
#include <QStringList>

#include <stdexcept>

namespace varo {

/// Something that a driver needs is not there.
class DriverError : public std::runtime_error {
  public:
    explicit DriverError(const QString& what) : std::runtime_error(what.toStdString()) {}
};

/// Lets everything that is queued happen.
void settle();

/// The rows of a grid of two columns as "name=value".
QStringList textsOf(const ui::EditGrid& grid);

/// The row of a grid whose first column holds `name`. Throws DriverError when there is none.
int rowOf(const ui::EditGrid& grid, const QString& name);

/// Types a value into the second column of the row that `name` begins, replacing what is there, and
/// leaves the editor open. Throws DriverError when there is no such row, or it cannot be edited.
QLineEdit& beginTyping(ui::EditGrid& grid, const QString& name, const QString& value);

}  // namespace varo
