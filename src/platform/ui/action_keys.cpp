#include "platform/ui/action_keys.h"

#include <QAction>
#include <QKeyEvent>
#include <QWidget>

#include <algorithm>

namespace varo::ui {

QKeySequence keysOf(const QKeyEvent& event) {
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    return QKeyCombination(modifiers, static_cast<Qt::Key>(event.key()));
}

ActionKeys::ActionKeys(QWidget& area) {
    area.installEventFilter(this);
}

QAction* ActionKeys::actionFor(const QKeyEvent& event) const {
    const auto found = std::ranges::find_if(actions_, [&](const QAction* action) {
        return action->isEnabled() && action->shortcut() == keysOf(event);
    });
    return found == actions_.end() ? nullptr : *found;
}

bool ActionKeys::eventFilter(QObject* watched, QEvent* event) {
    // Both come to the area when the widget that has the focus does not use them.
    if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if (QAction* action = actionFor(key)) {
            event->accept();
            if (event->type() == QEvent::KeyPress) {
                action->trigger();
            }
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace varo::ui
