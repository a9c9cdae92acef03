#pragma once

#include <QString>

namespace varo::ui {

/// `text` as an item of a list draws it: on one line, and no more of it than any view is wide;
/// drawing takes time that grows with the whole text.
inline QString lineOf(const QString& text) {
    constexpr qsizetype kDrawnCharacters = 300;
    QString line = text.left(kDrawnCharacters);
    line.replace(u'\n', u' ').replace(u'\r', u' ').replace(u'\t', u' ');
    return line.size() < text.size() ? line + u'…' : line;
}

/// `text` as a tool tip that shows it as it is, line ends and text that looks like markup included,
/// up to some 2,000 characters; "" for "".
inline QString plainToolTip(const QString& text) {
    constexpr qsizetype kTipCharacters = 2000;
    if (text.isEmpty()) {
        return {};
    }
    const QString shown = text.size() > kTipCharacters ? text.left(kTipCharacters) + u'…' : text;
    return QStringLiteral("<span style=\"white-space: pre-wrap\">%1</span>")
        .arg(shown.toHtmlEscaped());
}

}  // namespace varo::ui
