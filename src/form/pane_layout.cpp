#include "control/pane_layout.h"

#include <algorithm>

namespace varo {

namespace {

constexpr int ResultHeight = 1960;
constexpr int GridHeight = 1980;
constexpr int GridNameColumn = 800;
constexpr int MinResultWidth = 2700;
constexpr int MaxResultWidth = 5400;

/// `usual`, or `needed` if that is more, but then at most half of `room`.
int widened(int usual, int needed, int room) {
    return std::max(usual, std::min(needed, room / 2));
}

}  // namespace

void PaneLayout::setContentHeights(int toolbar, int symbol, int input) {
    if (clientHeight_ > 0) {
        paneHeight_ += toolbarHeight_ - toolbar;
    }
    toolbarHeight_ = toolbar;
    symbolHeight_ = symbol;
    inputHeight_ = input;
}

void PaneLayout::setContentWidths(int gridName, int result) {
    gridNameNeeds_ = gridName;
    resultNeeds_ = result;
}

void PaneLayout::resizeClient(int width, int height) {
    width = std::max(width, MinWidth);
    height = std::max(height, MinHeight);
    if (clientWidth_ == 0) {
        paneHeight_ = height - toolbarHeight_;
        backgroundWidth_ = width - treeWidth_ - Bar;
    } else {
        paneHeight_ += height - clientHeight_;
        const int wanted = backgroundWidth_ + width - clientWidth_;
        backgroundWidth_ = std::max(wanted, MinBackground);
        if (wanted < MinBackground) {
            treeWidth_ -= MinBackground - wanted;
        }
    }
    clientWidth_ = width;
    clientHeight_ = height;
    layOutBands();
}

void PaneLayout::layOutBands() {
    if (firstLayout_) {
        listWidth_ = backgroundWidth_ / 2 - Bar;
    } else {
        listWidth_ = std::max(backgroundWidth_ - descriptionWidth_ - Bar, MinListOrPanel);
    }
    descriptionWidth_ = backgroundWidth_ - listWidth_ - Bar;
}

int PaneLayout::clampTreeBar(int left) const {
    return std::max(MinTree, std::min(left, clientWidth_ - MinBackground - Bar));
}

int PaneLayout::clampListBar(int left) const {
    return std::max(MinListOrPanel, std::min(left, backgroundWidth_ - MinListOrPanel - Bar));
}

void PaneLayout::moveTreeBar(int left) {
    treeWidth_ = clampTreeBar(left);
    backgroundWidth_ = clientWidth_ - treeWidth_ - Bar;
    layOutBands();
}

void PaneLayout::moveListBar(int left) {
    listWidth_ = clampListBar(left);
    descriptionWidth_ = backgroundWidth_ - listWidth_ - Bar;
}

QRect PaneLayout::toolbar() const {
    return {0, 0, clientWidth_, toolbarHeight_};
}

QRect PaneLayout::treePane() const {
    return {0, toolbarHeight_ + Bar, treeWidth_, paneHeight_};
}

QRect PaneLayout::treeBar() const {
    return {treeWidth_, toolbarHeight_ + Bar, Bar, paneHeight_};
}

QRect PaneLayout::background() const {
    return {treeWidth_ + Bar, toolbarHeight_ + 10, backgroundWidth_, paneHeight_};
}

int PaneLayout::listHeight() const {
    const int lowerBands = inputHeight_ + Bar + ResultHeight + Bar + symbolHeight_ + Bar + 50;
    return paneHeight_ - lowerBands;
}

QRect PaneLayout::list() const {
    return {0, 0, listWidth_, listHeight()};
}

QRect PaneLayout::listBar() const {
    return {listWidth_, 0, Bar, listHeight()};
}

QRect PaneLayout::description() const {
    return {listWidth_ + Bar, 0, descriptionWidth_, listHeight() - 20};
}

QRect PaneLayout::symbol() const {
    return {0, listHeight() + Bar, backgroundWidth_, symbolHeight_};
}

QRect PaneLayout::input() const {
    return {0, symbol().y() + symbolHeight_ + Bar, backgroundWidth_, inputHeight_};
}

QRect PaneLayout::grid() const {
    return {0, input().y() + inputHeight_ + Bar, backgroundWidth_ - resultWidth() - Bar,
            GridHeight};
}

QRect PaneLayout::result() const {
    return {grid().width() + Bar, grid().y(), resultWidth(), ResultHeight};
}

int PaneLayout::resultWidth() const {
    // Messages in place of a result profit from more than the buttons need.
    const int usual = std::clamp(backgroundWidth_ * 2 / 5, MinResultWidth, MaxResultWidth);
    return widened(usual, resultNeeds_, backgroundWidth_);
}

int PaneLayout::gridColumns() const {
    return grid().width() - 400;
}

int PaneLayout::gridNameColumn() const {
    return widened(GridNameColumn, gridNameNeeds_, gridColumns());
}

int PaneLayout::gridValueColumn() const {
    return gridColumns() - gridNameColumn();
}

}  // namespace varo
