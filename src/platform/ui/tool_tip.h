#pragma once

#include <QString>

namespace varo::ui {

/// `text` as a tool tip that shows it as it is, line ends and text that looks like markup included;
/// "" for "".
inline QString plainToolTip(const QString& text) {
    return text.isEmpty() ? QString()
                          : QStringLiteral("<span style=\"white-space: pre-wrap\">%1</span>")
                                .arg(text.toHtmlEscaped());
}

}  // namespace varo::ui
