#include "search/hit_delegate.h"

#include "platform/ui/colors.h"
#include "platform/ui/shown_text.h"
#include "search/find_results.h"

#include <QApplication>
#include <QPainter>

namespace varo {

namespace {

constexpr int kMargin = 3;

}  // namespace

QSize HitDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {option.decorationSize.width(), 2 * option.fontMetrics.height() + 2 * kMargin};
}

void HitDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QStyle& style = *(item.widget == nullptr ? QApplication::style() : item.widget->style());
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &item, painter, item.widget);

    const QRect inner = item.rect.adjusted(kMargin, kMargin, -kMargin, -kMargin);
    QRect icon(QPoint(inner.left(), 0), item.decorationSize);
    icon.moveTop(inner.top() + (inner.height() - icon.height()) / 2);
    item.icon.paint(painter, icon);

    const bool isSelected = item.state.testFlag(QStyle::State_Selected);
    const auto group =
        item.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
    const QColor text =
        item.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
    // A selection's colours may differ too little for a text that is paler still.
    constexpr int kQuieter = 35;  // percent
    const QColor quiet =
        isSelected ? text : ui::mixed(text, item.palette.color(group, QPalette::Base), kQuieter);
    const int left = icon.right() + 2 * kMargin;
    const int height = item.fontMetrics.height();
    const QRect name(left, inner.top(), inner.right() - left, height);
    const auto draw = [&](const QRect& line, const QColor& color, const QString& shown,
                          Qt::TextElideMode elide) {
        painter->setPen(color);
        painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                          ui::inOneLine(shown, item.fontMetrics, line.width(), elide));
    };
    painter->save();
    painter->setFont(item.font);
    draw(name, text, index.data().toString(), Qt::ElideRight);
    draw(name.translated(0, height), quiet, index.data(FindResults::PlaceRole).toString(),
         Qt::ElideMiddle);
    painter->restore();
}

}  // namespace varo
