#pragma once

#include <QCursor>
#include <QGuiApplication>

namespace varo::ui {

/// Shows the wait cursor during the lifetime of an instance.
class clsWaitCursor {
  public:
    clsWaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~clsWaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    clsWaitCursor(const clsWaitCursor&) = delete;
    clsWaitCursor& operator=(const clsWaitCursor&) = delete;
};

}  // namespace varo::ui
