#pragma once

#include "driver/grid_driver.h"

#include <QAbstractItemView>
#include <QDialog>

#include <functional>

namespace varo {

/// Runs `open`, which must wait for the dialog called `name`, and `use` with that dialog as soon as
/// it is shown; closes the dialog if `use` leaves it open. Throws DriverError when it was not
/// opened, and what `use` throws.
void withDialog(const char* name, const std::function<void()>& open,
                const std::function<void(QDialog&)>& use);

/// The named part of a dialog. Throws DriverError when there is none.
template <class Part>
Part& partOf(const QDialog& dialog, const char* name) {
    auto* found = dialog.findChild<Part*>(QString::fromUtf8(name));
    if (found == nullptr) {
        throw DriverError(QStringLiteral("there is no '%1'").arg(QString::fromUtf8(name)));
    }
    return *found;
}

/// Clicks in the middle of an item of a list or table. Throws DriverError when there is none.
void clickOn(QAbstractItemView& view, const QModelIndex& item,
             Qt::KeyboardModifiers modifiers = {});
void doubleClickOn(QAbstractItemView& view, const QModelIndex& item);

/// Clicks in the middle of the named part of a dialog.
void clickIn(const QDialog& dialog, const char* name);

}  // namespace varo
