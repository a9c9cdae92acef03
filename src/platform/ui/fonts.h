#pragma once

#include <QFont>

namespace varo::ui {

/// The font "宋体", or its nearest installed relative, in the application's font size.
QFont songFont();

}  // namespace varo::ui
