#pragma once

#include <QIcon>
#include <QSize>

class QWidget;

namespace varo::ui {

/// The icon of the resource :/varo/icons/NAME.svg, sharp at every scale and the same for selected
/// items; an empty icon for an empty name.
QIcon ownIcon(const QString& name);

/// Size of the icons beside the text of a widget: proportional to its font, in steps that keep
/// their lines sharp.
QSize iconSizeFor(const QWidget& widget);

/// Icon of a standard action by its freedesktop name, from the desktop's theme, else from Breeze,
/// light or dark as the application's palette asks for now.
QIcon themeIcon(const QString& name);

}  // namespace varo::ui
