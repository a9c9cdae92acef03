#pragma once

#include <QEvent>
#include <QString>

class QWidget;

namespace varo::ui {

/// A message known by name, posted from one window to another with two arguments.
class RegisteredMessage : public QEvent {
  public:
    RegisteredMessage(QEvent::Type type, quintptr wordArgument, quintptr longArgument)
        : QEvent(type), wParam(wordArgument), lParam(longArgument) {}

    const quintptr wParam;
    const quintptr lParam;
};

/// Number of the message with this name: the same for every caller in the process that asks for the
/// same name. Only on the user-interface thread.
QEvent::Type registerWindowMessage(const QString& name);

/// Posts the message to `target`; returns at once. The receiver gets a RegisteredMessage in its
/// event().
void postWindowMessage(QWidget* target, QEvent::Type message, quintptr wParam, quintptr lParam);

/// A handle that names a widget in a message's argument.
quintptr windowHandleOf(QWidget* widget);

/// Text of the text box behind a handle; "" when the handle names no text box that still exists.
QString windowText(quintptr handle);

}  // namespace varo::ui
