#pragma once

#include <QString>
#include <QWidget>

namespace varo::host {

/// The widget of the control that carries this name; it must exist.
template <class Widget>
Widget& namedWidget(const QWidget& control, const char* name) {
    auto* found = control.findChild<Widget*>(QString::fromLatin1(name));
    Q_ASSERT_X(found != nullptr, "namedWidget", name);
    return *found;
}

}  // namespace varo::host
