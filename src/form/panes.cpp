#include "form/panes.h"

#include "platform/ui/edit_grid.h"
#include "platform/ui/icons.h"
#include "platform/ui/node_view.h"
#include "platform/ui/twips.h"

#include <QFrame>
#include <QHeaderView>
#include <QLayout>
#include <QMouseEvent>
#include <QStyle>
#include <QToolBar>

namespace varo {

namespace {

using ui::toPixels;
using ui::toTwips;

/// Both edges are rounded, so that panes which touch in twips touch in pixels.
QRect toPixels(const QRect& twips) {
    const QPoint topLeft(toPixels(twips.x()), toPixels(twips.y()));
    const QPoint bottomRight(toPixels(twips.x() + twips.width()),
                             toPixels(twips.y() + twips.height()));
    return {topLeft, QSize(bottomRight.x() - topLeft.x(), bottomRight.y() - topLeft.y())};
}

constexpr int roundedUpPixels(int twips) {
    return (twips + ui::kTwipsPerPixel - 1) / ui::kTwipsPerPixel;
}

/// Width in pixels that shows the heading of a grid's column whole.
int headingWidth(const ui::EditGrid& grid, int column) {
    const QHeaderView& header = *grid.horizontalHeader();
    const int margin = header.style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, &header);
    return header.fontMetrics().horizontalAdvance(grid.GetCellText(0, column)) + 2 * margin;
}

}  // namespace

Panes::Panes(const Form& form, QWidget& control)
    : form_(form),
      control_(control),
      treeSplitter_{form.picShowTreeSepar, form.picTreeSepar, &PaneLayout::clampTreeBar,
                    &PaneLayout::moveTreeBar},
      listSplitter_{form.picShowFormulaSepar, form.picFormulaSepar, &PaneLayout::clampListBar,
                    &PaneLayout::moveListBar} {
    control.setMinimumSize(roundedUpPixels(PaneLayout::kMinWidth),
                           roundedUpPixels(PaneLayout::kMinHeight));
    form.PicControl->installEventFilter(this);
    form.picShowTreeSepar->installEventFilter(this);
    form.picShowFormulaSepar->installEventFilter(this);
}

void Panes::follow() {
    form_.tbEdit->setIconSize(ui::iconSizeFor(*form_.tbEdit));
    layout_.setContentHeights(toTwips(form_.tbEdit->sizeHint().height()),
                              toTwips(form_.panel.symbols.picSymbol->sizeHint().height()),
                              toTwips(form_.picInputFormula->sizeHint().height()));
    // The layouts of its rows cache their size hints until it is activated.
    form_.panel.result.picResult->layout()->activate();
    layout_.setContentWidths(toTwips(headingWidth(*form_.panel.MSFEditVarList, kNameColumn)),
                             toTwips(form_.panel.result.picResult->minimumSizeHint().width()));
    layout_.resizeClient(toTwips(control_.width()), toTwips(control_.height()));
    place();
}

void Panes::place() {
    form_.PicControl->setGeometry(control_.rect());
    form_.tbEdit->setGeometry(toPixels(layout_.toolbar()));
    form_.picTreeContain->setGeometry(toPixels(layout_.treePane()));
    form_.picShowTreeSepar->setGeometry(toPixels(layout_.treeBar()));
    form_.picBackGround->setGeometry(toPixels(layout_.background()));

    form_.lvFormula->setGeometry(toPixels(layout_.list()));
    form_.lvFormula->header()->resizeSection(0, toPixels(layout_.listColumn()));
    form_.picShowFormulaSepar->setGeometry(toPixels(layout_.listBar()));
    form_.picFormula->setGeometry(toPixels(layout_.description()));
    form_.panel.symbols.picSymbol->setGeometry(toPixels(layout_.symbol()));
    form_.picInputFormula->setGeometry(toPixels(layout_.input()));
    form_.panel.MSFEditVarList->setGeometry(toPixels(layout_.grid()));
    form_.panel.MSFEditVarList->SetColWidth(kNameColumn, layout_.gridNameColumn());
    form_.panel.MSFEditVarList->SetColWidth(kValueColumn, layout_.gridValueColumn());
    form_.panel.result.picResult->setGeometry(toPixels(layout_.result()));
}

bool Panes::eventFilter(QObject* watched, QEvent* event) {
    if (watched == form_.PicControl) {
        if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
            follow();
        }
        return false;
    }
    const Splitter& splitter = watched == treeSplitter_.bar ? treeSplitter_ : listSplitter_;
    return dragSplitter(splitter, *event) || QObject::eventFilter(watched, event);
}

bool Panes::dragSplitter(const Splitter& splitter, const QEvent& event) {
    const auto target = [&] {
        const auto& mouse = static_cast<const QMouseEvent&>(event);
        const int left = splitter.bar->x() + static_cast<int>(mouse.position().x()) - grabbedAt_;
        return (layout_.*splitter.clamp)(toTwips(left));
    };
    switch (event.type()) {
        case QEvent::MouseButtonPress: {
            const auto& mouse = static_cast<const QMouseEvent&>(event);
            if (mouse.button() != Qt::LeftButton) {
                return false;
            }
            grabbedAt_ = static_cast<int>(mouse.position().x());
            splitter.dragBar->setGeometry(splitter.bar->geometry());
            splitter.dragBar->show();
            splitter.dragBar->raise();
            dragging_ = true;
            return true;
        }
        case QEvent::MouseMove:
            if (dragging_) {
                splitter.dragBar->move(toPixels(target()), splitter.dragBar->y());
            }
            return dragging_;
        case QEvent::MouseButtonRelease:
            if (!dragging_) {
                return false;
            }
            dragging_ = false;
            splitter.dragBar->hide();
            (layout_.*splitter.move)(target());
            splitter.bar->raise();
            place();
            return true;
        default:
            return false;
    }
}

}  // namespace varo
