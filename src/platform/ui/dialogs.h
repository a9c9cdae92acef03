#pragma once

class QDialog;

namespace varo::ui {

/// Opens a dialog over its parent, with the arrow as pointer whatever the caller has set, and waits
/// until it is closed; the rest of the program goes on meanwhile. Every dialog that is waited for
/// is opened here.
/// Returns whether it was accepted, false also when it was destroyed while it was open. A test
/// finds it as QApplication::activeModalWidget() and clicks in it.
bool runDialog(QDialog& dialog);

}  // namespace varo::ui
