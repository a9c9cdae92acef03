#include "formula/data_table_view.h"

#include <QEvent>
#include <QHeaderView>

#include <algorithm>

namespace varo {

namespace {

constexpr int kCellPadding = 8;
constexpr int kNarrowest = 60;
constexpr int kWidest = 260;

}  // namespace

DataTableView::DataTableView(QWidget* parent) : QTableView(parent) {
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
