#pragma once

#include <QColor>
#include <QPalette>

namespace varo::ui {

/// Whether the palette writes light on dark.
bool isDark(const QPalette& palette);

/// `color` with so many percent of `other` in it.
QColor mixed(const QColor& color, const QColor& other, int percent);

/// `color` if it can be read on the palette's base colour, else with as much of the palette's text
/// colour in it as that takes.
QColor readable(const QColor& color, const QPalette& palette);

}  // namespace varo::ui
