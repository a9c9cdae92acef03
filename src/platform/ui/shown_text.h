#pragma once

#include <QFontMetrics>
#include <QString>

#include <algorithm>

namespace varo::ui {

// Drawing takes time that grows with the whole text, of which a view shows little.

/// `text` as long as it has at most `most` characters, not negative; else so many of it with an
/// ellipsis in place of its end, or of its middle.
inline QString shortened(const QString& text, qsizetype most,
                         Qt::TextElideMode elide = Qt::ElideRight) {
    if (text.size() <= most) {
        return text;
    }
    const qsizetype behind = elide == Qt::ElideMiddle ? most / 2 : 0;
    QString front = text.first(most - behind);
    if (!front.isEmpty() && front.back().isHighSurrogate()) {
        front.chop(1);
    }
    QStringView back = QStringView(text).last(behind);
    if (!back.isEmpty() && back.front().isLowSurrogate()) {
        back = back.sliced(1);
    }
    return front.append(u'…').append(back);
}

/// `text` in one line of at most `most` characters, with an ellipsis as above: what ends a line,
/// and tabs, are blanks.
inline QString lineOf(const QString& text, qsizetype most = 300,
                      Qt::TextElideMode elide = Qt::ElideRight) {
    QString line = shortened(text, most, elide);
    std::ranges::replace_if(
        line, [](QChar each) { return each.isSpace() || each.category() == QChar::Other_Control; },
        u' ');
    return line;
}

/// `text` in one line of at most `width` pixels: what ends a line, and tabs, are blanks, and what
/// does not fit is replaced by an ellipsis. A text takes no longer for being longer than the line.
inline QString inOneLine(const QString& text, const QFontMetrics& metrics, int width,
                         Qt::TextElideMode elide = Qt::ElideRight) {
    // Hardly a character is narrower than a pixel.
    return metrics.elidedText(lineOf(text, std::max(width, 0), elide), elide, width);
}

/// `text` as a tool tip that shows it as it is, line ends and text that looks like markup included,
/// up to some 2,000 characters; "" for "".
inline QString plainToolTip(const QString& text) {
    constexpr qsizetype kMost = 2000;
    return text.isEmpty() ? QString()
                          : QStringLiteral("<span style=\"white-space: pre-wrap\">%1</span>")
                                .arg(shortened(text, kMost).toHtmlEscaped());
}

}  // namespace varo::ui
