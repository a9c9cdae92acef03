#include "platform/ui/result_box.h"

#include "platform/ui/colors.h"
#include "platform/ui/icons.h"
#include "platform/ui/shown_text.h"

#include <QEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyle>
#include <QStyleOptionFrame>

namespace varo::ui {

namespace {

/// The margin that a line edit keeps around its text besides that of the style.
constexpr int kInnerMargin = 2;

constexpr int kIconGap = 5;

const QColor kErrorColor(0xC0, 0x10, 0x20);

QIcon iconOf(ResultBox::State state) {
    switch (state) {
        case ResultBox::State::Error:
            return ownIcon(QStringLiteral("error"));
        case ResultBox::State::Doubtful:
            return ownIcon(QStringLiteral("warning"));
        case ResultBox::State::Normal:
        case ResultBox::State::Stale:
            break;
    }
    return {};
}

}  // namespace

ResultBox::ResultBox(QWidget* parent) : QLineEdit(parent) {
    setReadOnly(true);
}

void ResultBox::setResult(const QString& text, State state, const QString& reason) {
    setText(text);
    setCursorPosition(0);
    setState(state, reason);
}

void ResultBox::setState(State state, const QString& reason) {
    state_ = state;
    setToolTip(plainToolTip(reason.isEmpty() ? text() : reason + u'\n' + text()));
    setAccessibleDescription(reason);
    chooseColors();
    fitIcon();
    update();
}

void ResultBox::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !choosesColors_) {
        chooseColors();
    } else if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        fitIcon();
    }
}

/// Takes the palette from around the box and changes only the colour of the text in it.
void ResultBox::chooseColors() {
    const QScopedValueRollback choosing(choosesColors_, true);
    setPalette(QPalette());
    if (state_ != State::Stale && state_ != State::Error) {
        return;
    }
    const QPalette around = palette();
    const QColor color = state_ == State::Error
                             ? kErrorColor
                             : mixed(around.color(QPalette::Active, QPalette::Text),
                                     around.color(QPalette::Active, QPalette::Base), 50);
    QPalette own;
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        own.setColor(group, QPalette::Text, readable(color, around));
    }
    setPalette(own);
}

void ResultBox::fitIcon() {
    const bool hasIcon = !iconOf(state_).isNull();
    setTextMargins(hasIcon ? iconSizeFor(*this).width() + kIconGap : 0, 0, 0, 0);
}

/// The part of the box that the text is drawn in.
QRect ResultBox::textArea() const {
    QStyleOptionFrame panel;
    initStyleOption(&panel);
    return style()
        ->subElementRect(QStyle::SE_LineEditContents, &panel, this)
        .marginsRemoved(textMargins())
        .adjusted(kInnerMargin, 0, -kInnerMargin, 0);
}

void ResultBox::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    const QRect area = textArea();
    const QIcon icon = iconOf(state_);
    if (!icon.isNull()) {
        QRect place(QPoint(), iconSizeFor(*this));
        place.moveCenter(area.center());
        place.moveRight(area.left() - kIconGap);
        icon.paint(&painter, place);
    }
    const int caret = cursorRect().center().x();
    const int hidden = 2;  // pixels that rounding may hide of a text that fits
    if (caret - fontMetrics().horizontalAdvance(text().first(cursorPosition())) <
        area.left() - hidden) {
        paintEllipsis(painter, false);
    }
    if (caret + fontMetrics().horizontalAdvance(text().sliced(cursorPosition())) >
        area.right() + 1 + hidden) {
        paintEllipsis(painter, true);
    }
}

void ResultBox::paintEllipsis(QPainter& painter, bool atEnd) const {
    const QString ellipsis = QStringLiteral("…");
    QRect place = textArea();
    const int width = fontMetrics().horizontalAdvance(ellipsis);
    atEnd ? place.setLeft(place.right() + 1 - width) : place.setWidth(width);
    painter.fillRect(place.adjusted(atEnd ? 0 : -kInnerMargin, 0, atEnd ? kInnerMargin : 0, 0),
                     palette().base());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(place, Qt::AlignCenter, ellipsis);
}

}  // namespace varo::ui
