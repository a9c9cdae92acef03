#pragma once

#include <QRect>

namespace varo {

/// Geometry of the panes of the control, in twips: computes their rectangles for a size of the
/// control and for positions of the splitter bars. The origin of the outer panes is the control's
/// top left corner, that of the bands is the background pane's.
class PaneLayout {
  public:
    static constexpr int kBar = 30;              ///< width of a splitter bar and of every gap
    static constexpr int kMinWidth = 7000;       ///< of the control
    static constexpr int kMinHeight = 6000;      ///< of the control
    static constexpr int kMinBackground = 4600;  ///< width of the background pane
    static constexpr int kMinTree = 1700;  ///< width of the tree pane while its bar is dragged
    static constexpr int kMinListOrPanel =
        1800;  ///< width of the list and of the description panel

    /// Sets the heights that the contents need.
    void setContentHeights(int toolbar, int symbol, int input);

    /// Sets the widths that the heading of the grid's first column and the result area need to show
    /// their texts whole. They are given more than their usual widths where that needs at most half
    /// of the room.
    void setContentWidths(int gridName, int result);

    /// Sets the size of the client area; at least kMinWidth by kMinHeight is used. The first call
    /// gives the panes their initial sizes.
    void resizeClient(int width, int height);

    /// After this the description panel keeps its width when the background pane changes its own.
    void endFirstLayout() { firstLayout_ = false; }

    /// The nearest place that a bar may be dragged to.
    int clampTreeBar(int left) const;
    int clampListBar(int left) const;

    /// Puts a bar at `left` (clamped) and gives its neighbours their widths.
    void moveTreeBar(int left);
    void moveListBar(int left);

    QRect toolbar() const;
    QRect treePane() const;
    QRect treeBar() const;
    QRect background() const;

    QRect list() const;
    QRect listBar() const;
    QRect description() const;
    QRect symbol() const;
    QRect input() const;
    QRect grid() const;
    QRect result() const;

    /// Widths of the columns: the one of the list, and the two of the variable grid.
    int listColumn() const { return listWidth_ - 400; }
    int gridNameColumn() const;
    int gridValueColumn() const;

  private:
    void layOutBands();
    int listHeight() const;
    int resultWidth() const;
    int gridColumns() const;

    int toolbarHeight_ = 0;
    int symbolHeight_ = 0;
    int inputHeight_ = 0;
    int gridNameNeeds_ = 0;
    int resultNeeds_ = 0;
    int clientWidth_ = 0;
    int clientHeight_ = 0;
    int treeWidth_ = 2120;
    int paneHeight_ = 0;  ///< of the tree pane, its bar and the background pane
    int backgroundWidth_ = 0;
    int listWidth_ = 0;
    int descriptionWidth_ = 0;
    bool firstLayout_ = true;
};

}  // namespace varo
