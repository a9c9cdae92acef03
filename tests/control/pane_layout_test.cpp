#include "control/pane_layout.h"

#include <gtest/gtest.h>

namespace varo {
namespace {

constexpr int Toolbar = 540;
constexpr int Symbol = 900;
constexpr int Input = 480;

PaneLayout layoutOf(int width, int height) {
    PaneLayout layout;
    layout.setContentHeights(Toolbar, Symbol, Input);
    layout.resizeClient(width, height);
    return layout;
}

TEST(PaneLayout, FirstSizesFollowTheClientArea) {
    const PaneLayout layout = layoutOf(15000, 10000);
    EXPECT_EQ(layout.toolbar(), QRect(0, 0, 15000, Toolbar));
    EXPECT_EQ(layout.treePane(), QRect(0, Toolbar + 30, 2120, 10000 - Toolbar));
    EXPECT_EQ(layout.treeBar(), QRect(2120, Toolbar + 30, 30, 10000 - Toolbar));
    EXPECT_EQ(layout.background(), QRect(2150, Toolbar + 10, 15000 - 2150, 10000 - Toolbar));
    EXPECT_EQ(layout.list().width(), (15000 - 2150) / 2 - 30);
}

TEST(PaneLayout, BandsLieBelowEachOtherWithAGap) {
    const PaneLayout layout = layoutOf(15000, 10000);
    const int listHeight = 10000 - Toolbar - (Input + 30 + 1960 + 30 + Symbol + 30 + 50);
    EXPECT_EQ(layout.list().height(), listHeight);
    EXPECT_EQ(layout.listBar(), QRect(layout.list().width(), 0, 30, listHeight));
    EXPECT_EQ(layout.description().x(), layout.list().width() + 30);
    EXPECT_EQ(layout.description().height(), listHeight - 20);
    EXPECT_EQ(layout.description().x() + layout.description().width(), layout.background().width());
    EXPECT_EQ(layout.symbol(), QRect(0, listHeight + 30, layout.background().width(), Symbol));
    EXPECT_EQ(layout.input().y(), listHeight + 30 + Symbol + 30);
    EXPECT_EQ(layout.grid().y(), layout.input().y() + Input + 30);
    EXPECT_EQ(layout.grid().height(), 1980);
    EXPECT_EQ(layout.result().y(), layout.grid().y());
    EXPECT_EQ(layout.result().x(), layout.grid().width() + 30);
    EXPECT_EQ(layout.result().height(), 1960);
    EXPECT_EQ(layout.result().x() + layout.result().width(), layout.background().width());
    EXPECT_EQ(layout.listColumn(), layout.list().width() - 400);
    EXPECT_EQ(layout.gridNameColumn(), 800);
    EXPECT_EQ(layout.gridValueColumn(), layout.grid().width() - 1200);
}

TEST(PaneLayout, ALargeFontGetsWiderColumnsAndResultsUpToHalfOfTheRoom) {
    struct {
        int clientWidth, name, result;  // what is needed
        int nameColumn, resultWidth;
    } const cases[] = {
        {15000, 780, 2600, 800, 5140},
        {9600, 1300, 3700, 1300, 3700},
        {7000, 1300, 3700, 860, 2700},
    };
    for (const auto& each : cases) {
        PaneLayout layout;
        layout.setContentHeights(Toolbar, Symbol, Input);
        layout.setContentWidths(each.name, each.result);
        layout.resizeClient(each.clientWidth, 10000);
        EXPECT_EQ(layout.gridNameColumn(), each.nameColumn) << each.clientWidth;
        EXPECT_EQ(layout.result().width(), each.resultWidth) << each.clientWidth;
        EXPECT_EQ(layout.gridNameColumn() + layout.gridValueColumn(), layout.grid().width() - 400);
        EXPECT_EQ(layout.result().x() + each.resultWidth, layout.background().width());
    }
}

TEST(PaneLayout, ATooSmallClientIsTreatedAsTheLeastSize) {
    const PaneLayout layout = layoutOf(5000, 4000);
    EXPECT_EQ(layout.toolbar().width(), 7000);
    EXPECT_EQ(layout.treePane().height(), 6000 - Toolbar);
}

TEST(PaneLayout, ShrinkingTakesFromTheBackgroundUntilItsLeastWidthThenFromTheTree) {
    PaneLayout layout = layoutOf(15000, 10000);
    layout.moveTreeBar(6000);
    layout.resizeClient(12000, 9000);
    EXPECT_EQ(layout.treePane().width(), 6000);
    EXPECT_EQ(layout.background().width(), 12000 - 6030);
    EXPECT_EQ(layout.treePane().height(), 9000 - Toolbar);
    layout.resizeClient(9000, 9000);
    EXPECT_EQ(layout.background().width(), 4600);
    EXPECT_EQ(layout.treePane().width(), 9000 - 4630);
    EXPECT_EQ(layout.treeBar().x(), 9000 - 4630);
    EXPECT_EQ(layout.background().x(), 9000 - 4600);
    layout.resizeClient(15000, 9000);
    EXPECT_EQ(layout.treePane().width(), 9000 - 4630) << "growing goes to the background pane";
    EXPECT_EQ(layout.background().width(), 4600 + 6000);
}

TEST(PaneLayout, TheDescriptionKeepsItsWidthOnceLaidOutAndTheListItsLeast) {
    PaneLayout layout = layoutOf(15000, 10000);
    layout.endFirstLayout();
    const int width = layout.description().width();
    layout.resizeClient(18000, 10000);
    EXPECT_EQ(layout.description().width(), width);
    EXPECT_EQ(layout.list().width(), layout.background().width() - width - 30);
    layout.resizeClient(8000, 10000);
    EXPECT_EQ(layout.list().width(), 1800);
    EXPECT_EQ(layout.description().width(), layout.background().width() - 1800 - 30);
}

TEST(PaneLayout, BarsStopAtTheirLimits) {
    PaneLayout layout = layoutOf(15000, 10000);
    struct {
        int wanted, tree, list;
    } const cases[] = {
        {-5000, 1700, 1800},
        {1700, 1700, 1800},
        {5000, 5000, 5000},
        {99999, 15000 - 4630, 15000 - 2150 - 1830},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(layout.clampTreeBar(each.wanted), each.tree) << each.wanted;
        EXPECT_EQ(layout.clampListBar(each.wanted), each.list) << each.wanted;
    }
    layout.moveListBar(99999);
    EXPECT_EQ(layout.description().width(), 1800);
    EXPECT_EQ(layout.list().width() + 30 + 1800, layout.background().width());
    layout.moveTreeBar(4000);
    EXPECT_EQ(layout.treePane().width(), 4000);
    EXPECT_EQ(layout.background(), QRect(4030, Toolbar + 10, 15000 - 4030, 10000 - Toolbar));
}

}  // namespace
}  // namespace varo
