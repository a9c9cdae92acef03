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
    const QRect background = layout.background();
    EXPECT_EQ(layout.toolbar(), QRect(0, 0, client.width(), kToolbar));
    EXPECT_EQ(layout.treePane().height(), client.height() - kToolbar);
    EXPECT_EQ(background.height(), client.height() - kToolbar);
    EXPECT_EQ(layout.treeBar().x(), layout.treePane().width());
    EXPECT_EQ(background.x(), layout.treePane().width() + kBar);
    EXPECT_EQ(background.x() + background.width(), client.width());
    EXPECT_EQ(layout.listBar(), QRect(layout.list().width(), 0, kBar, layout.list().height()));
    EXPECT_EQ(layout.description().x(), layout.list().width() + kBar);
    EXPECT_EQ(layout.description().x() + layout.description().width(), background.width());
    int y = layout.list().height() + kBar;
    for (const auto& [band, height] :
         {std::pair{layout.symbol(), kSymbol}, {layout.input(), kInput}}) {
        EXPECT_EQ(band, QRect(0, y, background.width(), height));
        y += height + kBar;
    }
    EXPECT_EQ(layout.grid().topLeft(), QPoint(0, y));
    EXPECT_EQ(layout.result().topLeft(), QPoint(layout.grid().width() + kBar, y));
    EXPECT_EQ(layout.result().x() + layout.result().width(), background.width());
    EXPECT_EQ(y + layout.result().height() + 50, background.height());
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
    } const steps[] = {
        {"at first", 15000, 10000, 0, 0, 2120, (15000 - 2150) / 2 - 30},
        {"the tree's bar", 0, 0, 6000, 0, 6000, (15000 - 6030) / 2 - 30},
        {"shrinking takes from the background", 12000, 9000, 0, 0, 6000, 2955},
        {"then from the tree", 9000, 9000, 0, 0, 9000 - 4630, 2270},
        {"growing goes to the background", 15000, 9000, 0, 0, 4370, 5270},
        {"bars stop at the left", 0, 0, -5000, -5000, 1700, 1800},
        {"and at the right", 0, 0, 99999, 99999, 15000 - 4630, 4600 - 1830},
        {"at least 7000 by 6000", 5000, 4000, 0, 0, 2370, 2270},
    };
    QSize client;
    for (const auto& step : steps) {
        SCOPED_TRACE(step.what);
        if (step.width > 0) {
            client = {std::max(step.width, 7000), std::max(step.height, 6000)};
            layout.resizeClient(step.width, step.height);
        }
        if (step.treeBar != 0) {
            layout.moveTreeBar(step.treeBar);
            EXPECT_EQ(layout.clampTreeBar(step.treeBar), step.tree);
        }
        if (step.listBar != 0) {
            EXPECT_EQ(layout.clampListBar(step.listBar), step.list);
            layout.moveListBar(step.listBar);
        }
        expectFilled(layout, client);
        EXPECT_EQ(layout.treePane().width(), step.tree);
        EXPECT_EQ(layout.list().width(), step.list);
    }
}

TEST(PaneLayout, TheDescriptionKeepsItsWidthOnceShownAndTheListItsLeast) {
    PaneLayout layout;
    layout.setContentHeights(kToolbar, kSymbol, kInput);
    layout.resizeClient(15000, 10000);
    layout.endFirstLayout();
    const int width = layout.description().width();
    layout.resizeClient(18000, 10000);
    EXPECT_EQ(layout.description().width(), width);
    layout.resizeClient(8000, 10000);
    EXPECT_EQ(layout.list().width(), 1800);
    expectFilled(layout, {8000, 10000});
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
