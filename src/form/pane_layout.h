#pragma once

#include <QRect>

namespace varo {

/// Where the panes of the control lie, in twips, and how they follow a resize or a dragged
/// splitter. Rectangles of the outer panes count from the control's corner, those of the bands from
/// the corner of the background pane.
class PaneLayout {
  public:
    static constexpr int Bar = 30;              ///< width of a splitter bar and of every gap
    static constexpr int MinWidth = 7000;       ///< of the control
    static constexpr int MinHeight = 6000;      ///< of the control
    static constexpr int MinBackground = 4600;  ///< width of the background pane
    static constexpr int MinTree = 1700;        ///< width of the tree pane while its bar is dragged
    static constexpr int MinListOrPanel = 1800;  ///< width of the list and of the description panel

    /// Heights that the contents need; all bands are laid out anew.
    void setContentHeights(int toolbar, int symbol, int input);

    /// Widths that the heading of the grid's first column and the result area need to show their
    /// texts whole. They get more than their usual widths for it where half of the room is enough.
    void setContentWidths(int gridName, int result);

    /// The client area has this size now; the first call gives the panes their initial sizes.
    void resizeClient(int width, int height);

    /// From now on the description panel keeps its width when the background pane changes its own.
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
