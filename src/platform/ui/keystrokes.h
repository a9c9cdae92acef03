#pragma once

#include <QStringView>

class QWidget;

namespace varo::ui {

/// Types `keys` on `target`, whether or not it has the focus. Returns at once: the keystrokes are
/// queued and arrive in order as ordinary key presses, each followed by its release; those that
/// have not arrived when the target is destroyed are dropped.
///
/// A character stands for its own key, and so does a character in braces, which is the way to type
/// a brace: "{{}", "{}}". "{left}" stands for the left-arrow key. Any other name in braces types
/// nothing, and nothing is typed from a brace on that is never closed.
void typeKeys(QWidget& target, QStringView keys);

}  // namespace varo::ui
