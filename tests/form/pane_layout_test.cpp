#include "form/pane_layout.h"

#include <gtest/gtest.h>

namespace varo {
namespace {

constexpr int kToolbar = 540;
constexpr int kSymbol = 900;
constexpr int kInput = 480;
constexpr int kBar = PaneLayout::kBar;

/// Checks what holds for every size: the panes fill the client area without overlapping.
void expectFilled(const PaneLayout& layout, QSize client) {
    const QRect tree = layout.treePane();
    const QRect background = layout.background();
    const QRect list = layout.list();
    EXPECT_EQ(layout.toolbar(), QRect(0, 0, client.width(), kToolbar));
    EXPECT_EQ(tree.height(), client.height() - kToolbar);
    EXPECT_EQ(background.height(), client.height() - kToolbar);
    EXPECT_EQ(layout.treeBar().x(), tree.width());
    EXPECT_EQ(background.x(), tree.width() + kBar);
    EXPECT_EQ(background.right(), client.width() - 1);
    EXPECT_EQ(layout.listBar(), QRect(list.width(), 0, kBar, list.height()));
    EXPECT_EQ(layout.description().x(), list.width() + kBar);
    EXPECT_EQ(layout.description().right(), background.width() - 1);
    const int below = list.height() + kBar;
    EXPECT_EQ(layout.symbol(), QRect(0, below, background.width(), kSymbol));
    EXPECT_EQ(layout.input(), QRect(0, below + kSymbol + kBar, background.width(), kInput));
    EXPECT_EQ(layout.grid().topLeft(), QPoint(0, below + kSymbol + kInput + 2 * kBar));
    EXPECT_EQ(layout.result().topLeft(), layout.grid().topRight() + QPoint(kBar + 1, 0));
    EXPECT_EQ(layout.result().bottomRight(),
              QPoint(background.width() - 1, background.height() - 51));
    EXPECT_EQ(layout.gridNameColumn() + layout.gridValueColumn(), layout.grid().width() - 400);
}

TEST(PaneLayout, FollowsTheClientAreaAndTheBarsWithinTheirLimits) {
    PaneLayout layout;
    layout.setContentHeights(kToolbar, kSymbol, kInput);
    struct {
        const char* what;
        int width, height;     // of the client area; 0: stays
        int treeBar, listBar;  // dragged to; 0: not
        int tree, list;        // widths that come of it
        bool shown = false;
    } const steps[] = {
        {"at first", 15000, 10000, 0, 0, 2120, (15000 - 2150) / 2 - 30},
        {"the tree's bar", 0, 0, 6000, 0, 6000, (15000 - 6030) / 2 - 30},
        {"shrinking takes from the background", 12000, 9000, 0, 0, 6000, 2955},
        {"then from the tree", 9000, 9000, 0, 0, 9000 - 4630, 2270},
        {"growing goes to the background", 15000, 9000, 0, 0, 4370, 5270},
        {"bars stop at the left", 0, 0, -5000, -5000, 1700, 1800},
        {"and at the right", 0, 0, 99999, 99999, 15000 - 4630, 4600 - 1830},
        {"at least 7000 by 6000", 5000, 4000, 0, 0, 2370, 2270},
        {"once shown, growing goes to the list", 15000, 10000, 0, 0, 2370, 12600 - 2330, true},
        {"a narrower list", 0, 0, 0, 5000, 2370, 5000, true},
        {"is the first to shrink, to its least", 9000, 10000, 0, 0, 2370, 1800, true},
    };
    QSize client;
    for (const auto& step : steps) {
        SCOPED_TRACE(step.what);
        if (step.shown) {
            layout.endFirstLayout();
        }
        if (step.width > 0) {
            client = {std::max(step.width, 7000), std::max(step.height, 6000)};
            layout.resizeClient(step.width, step.height);
        }
        if (step.treeBar != 0) {
            layout.moveTreeBar(step.treeBar);
        }
        if (step.listBar != 0) {
            layout.moveListBar(step.listBar);
        }
        expectFilled(layout, client);
        EXPECT_EQ(layout.treePane().width(), step.tree);
        EXPECT_EQ(layout.list().width(), step.list);
    }
}

TEST(PaneLayout, ALargeFontGetsWiderColumnsAndResultsUpToHalfOfTheRoom) {
    struct {
        int clientWidth, name, result;  // what is needed
        int nameColumn, resultWidth;
    } const cases[] = {{15000, 780, 2600, 800, 5140},
                       {9600, 1300, 3700, 1300, 3700},
                       {7000, 1300, 3700, 860, 2700}};
    for (const auto& each : cases) {
        PaneLayout layout;
        layout.setContentHeights(kToolbar, kSymbol, kInput);
        layout.setContentWidths(each.name, each.result);
        layout.resizeClient(each.clientWidth, 10000);
        EXPECT_EQ(layout.gridNameColumn(), each.nameColumn) << each.clientWidth;
        EXPECT_EQ(layout.result().width(), each.resultWidth) << each.clientWidth;
    }
}

}  // namespace
}  // namespace varo
