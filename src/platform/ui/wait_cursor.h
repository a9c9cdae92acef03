#pragma once

#include <QGuiApplication>

namespace varo::ui {

/// Shows the hourglass for as long as an instance lives.
class clsWaitCursor {
  public:
    clsWaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~clsWaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    clsWaitCursor(const clsWaitCursor&) = delete;
    clsWaitCursor& operator=(const clsWaitCursor&) = delete;
};

}  // namespace varo::ui
