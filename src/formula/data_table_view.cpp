#include "formula/data_table_view.h"

#include "platform/ui/shown_text.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QStyledItemDelegate>
#include <QToolTip>

#include <algorithm>

namespace varo {

namespace {

constexpr int kCellPadding = 8;
constexpr int kNarrowest = 60;
constexpr int kWidest = 260;

/// Shows a text as tool tip where it is cut.
class CellDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override {
        if (event->type() != QEvent::ToolTip) {
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        }
        const bool isCut = sizeHint(option, index).width() > option.rect.width();
        QToolTip::showText(event->globalPos(),
                           isCut ? ui::plainToolTip(index.data().toString()) : QString(), view);
        return true;
    }
};

}  // namespace

DataTableView::DataTableView(QWidget* parent) : QTableView(parent) {
    setItemDelegate(new CellDelegate(this));
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setCornerButtonEnabled(false);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSortIndicatorClearable(true);
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    constexpr int kRowsLookedAt = 64;
    horizontalHeader()->setResizeContentsPrecision(kRowsLookedAt);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    fitRows();
}

void DataTableView::fitColumns() {
    resizeColumnsToContents();
    for (int column = 0; column < horizontalHeader()->count(); ++column) {
        setColumnWidth(column, std::clamp(columnWidth(column), kNarrowest, kWidest));
    }
}

void DataTableView::fitRows() {
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kCellPadding);
}

void DataTableView::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        fitRows();
    }
}

}  // namespace varo
