#pragma once

#include <QString>

namespace varo::ui {

/// `text` as a tool tip that shows it as it is, also where it looks like markup; "" stays "".
inline QString plainToolTip(const QString& text) {
    return text.isEmpty() ? QString() : QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped());
}

}  // namespace varo::ui
