#pragma once

#include "platform/ui/thumbnail_loader.h"

#include <QListView>

namespace varo::ui {

/// Shows many pictures small, in rows, each with the text of its item below it. The pictures are
/// the rows of a model that only grows, or is reset; their bytes come from elsewhere. Only pictures
/// that can be seen, and some behind them, are read, and nothing waits for one: until it is there a
/// frame is drawn in its place, and a mark where it cannot be read. Ctrl with the wheel, "+", "-"
/// or "0" changes the size.
class PictureGrid : public QListView {
    Q_OBJECT

  public:
    explicit PictureGrid(QWidget* parent = nullptr);

    /// Shows the pictures of `model`, row by row, whose bytes `bytes` gives. Both must outlive this
    /// or be released.
    void setPictures(QAbstractItemModel* model, PictureBytes* bytes);

    /// Lets go of model and bytes; no picture is shown then.
    void release();

    /// Side of the square that a picture fits into, in device-independent pixels.
    int side() const { return side_; }

    /// Makes the pictures larger by so many steps, smaller when negative; 0 gives them back their
    /// first size.
    void zoom(int steps);

    /// What is known of a row's picture.
    enum class State { Waiting, Shown, Unreadable };
    State stateOf(int row) const;
    const ThumbnailLoader& thumbnails() const { return loader_; }

  signals:
    /// The user clicked the picture, or pressed Enter on it.
    void pictureClicked(int row);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    class Delegate;

    void setSide(int side);
    void askForVisible();

    ThumbnailLoader loader_;
    int side_;
    int wheel_ = 0;  ///< what the wheel has been turned since the last step
};

}  // namespace varo::ui
