#include "platform/ui/registered_message.h"

#include <QApplication>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace varo::ui {

namespace {

/// The widget behind a handle, which may be stale or made up: it is compared, never followed, until
/// it is known to name a widget that exists.
QWidget* widgetOf(quintptr handle) {
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        if (windowHandleOf(widget) == handle) {
            return widget;
        }
    }
    return nullptr;
}

}  // namespace

QEvent::Type registerWindowMessage(const QString& name) {
    static QHash<QString, QEvent::Type> numbers;
    auto number = numbers.find(name);
    if (number == numbers.end()) {
        number = numbers.insert(name, static_cast<QEvent::Type>(QEvent::registerEventType()));
    }
    return *number;
}

void postWindowMessage(QWidget* target, QEvent::Type message, quintptr wParam, quintptr lParam) {
    if (target) {
        QCoreApplication::postEvent(target, new RegisteredMessage(message, wParam, lParam));
    }
}

quintptr windowHandleOf(QWidget* widget) {
    return reinterpret_cast<quintptr>(widget);
}

QString windowText(quintptr handle) {
    const QWidget* widget = widgetOf(handle);
    if (const auto* line = qobject_cast<const QLineEdit*>(widget)) {
        return line->text();
    }
    if (const auto* plain = qobject_cast<const QPlainTextEdit*>(widget)) {
        return plain->toPlainText();
    }
    if (const auto* rich = qobject_cast<const QTextEdit*>(widget)) {
        return rich->toPlainText();
    }
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        return label->text();
    }
    return {};
}

}  // namespace varo::ui
