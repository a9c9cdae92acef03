#pragma once

#include <QFont>

namespace varo::ui {

/// The font "宋体", or its nearest installed relative; a widget that is given it keeps the size and
/// style of the font around it.
QFont songFont();

}  // namespace varo::ui
