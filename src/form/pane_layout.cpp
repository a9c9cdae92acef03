#include "form/pane_layout.h"

#include <algorithm>

namespace varo {

namespace {

constexpr int kResultHeight = 1960;
constexpr int kGridHeight = 1980;
constexpr int kGridNameColumn = 800;
constexpr int kMinResultWidth = 2700;
constexpr int kMaxResultWidth = 5400;

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
    width = std::max(width, kMinWidth);
    height = std::max(height, kMinHeight);
    if (clientWidth_ == 0) {
        paneHeight_ = height - toolbarHeight_;
        backgroundWidth_ = width - treeWidth_ - kBar;
    } else {
        paneHeight_ += height - clientHeight_;
        const int wanted = backgroundWidth_ + width - clientWidth_;
        backgroundWidth_ = std::max(wanted, kMinBackground);
        if (wanted < kMinBackground) {
            treeWidth_ -= kMinBackground - wanted;
        }
    }
    clientWidth_ = width;
    clientHeight_ = height;
    layOutBands();
}

void PaneLayout::layOutBands() {
    if (firstLayout_) {
        listWidth_ = backgroundWidth_ / 2 - kBar;
    } else {
        listWidth_ = std::max(backgroundWidth_ - descriptionWidth_ - kBar, kMinListOrPanel);
    }
    descriptionWidth_ = backgroundWidth_ - listWidth_ - kBar;
}

int PaneLayout::clampTreeBar(int left) const {
    return std::max(kMinTree, std::min(left, clientWidth_ - kMinBackground - kBar));
}

int PaneLayout::clampListBar(int left) const {
    return std::max(kMinListOrPanel, std::min(left, backgroundWidth_ - kMinListOrPanel - kBar));
}

void PaneLayout::moveTreeBar(int left) {
    treeWidth_ = clampTreeBar(left);
    backgroundWidth_ = clientWidth_ - treeWidth_ - kBar;
    layOutBands();
}

void PaneLayout::moveListBar(int left) {
    listWidth_ = clampListBar(left);
    descriptionWidth_ = backgroundWidth_ - listWidth_ - kBar;
}

QRect PaneLayout::toolbar() const {
    return {0, 0, clientWidth_, toolbarHeight_};
}

QRect PaneLayout::treePane() const {
    return {0, toolbarHeight_ + kBar, treeWidth_, paneHeight_};
}

QRect PaneLayout::treeBar() const {
    return {treeWidth_, toolbarHeight_ + kBar, kBar, paneHeight_};
}

QRect PaneLayout::background() const {
    return {treeWidth_ + kBar, toolbarHeight_ + 10, backgroundWidth_, paneHeight_};
}

int PaneLayout::listHeight() const {
    const int lowerBands = inputHeight_ + kBar + kResultHeight + kBar + symbolHeight_ + kBar + 50;
    return paneHeight_ - lowerBands;
}

QRect PaneLayout::list() const {
    return {0, 0, listWidth_, listHeight()};
}

QRect PaneLayout::listBar() const {
    return {listWidth_, 0, kBar, listHeight()};
}

QRect PaneLayout::description() const {
    return {listWidth_ + kBar, 0, descriptionWidth_, listHeight() - 20};
}

QRect PaneLayout::symbol() const {
    return {0, listHeight() + kBar, backgroundWidth_, symbolHeight_};
}

QRect PaneLayout::input() const {
    return {0, symbol().y() + symbolHeight_ + kBar, backgroundWidth_, inputHeight_};
}

QRect PaneLayout::grid() const {
    return {0, input().y() + inputHeight_ + kBar, backgroundWidth_ - resultWidth() - kBar,
            kGridHeight};
}

QRect PaneLayout::result() const {
    return {grid().width() + kBar, grid().y(), resultWidth(), kResultHeight};
}

int PaneLayout::resultWidth() const {
    // The result box also shows error messages, which need more room than the buttons.
    const int usual = std::clamp(backgroundWidth_ * 2 / 5, kMinResultWidth, kMaxResultWidth);
    return widened(usual, resultNeeds_, backgroundWidth_);
}

int PaneLayout::gridColumns() const {
    return grid().width() - 400;
}

int PaneLayout::gridNameColumn() const {
    return widened(kGridNameColumn, gridNameNeeds_, gridColumns());
}

int PaneLayout::gridValueColumn() const {
    return gridColumns() - gridNameColumn();
}

}  // namespace varo
