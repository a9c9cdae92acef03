#pragma once

#include "platform/ui/picture.h"

#include <QPixmap>
#include <QWidget>

namespace varo::ui {

/// Shows a picture scaled to the box with its proportions kept, centred, sharp at every scale; or,
/// where there is none to show, a text that says so. Shows whether it has the focus.
class PictureBox : public QWidget {
    Q_OBJECT

  public:
    explicit PictureBox(QWidget* parent = nullptr);

    /// Loads the picture in the file. Returns false, leaving the box as it was, when Picture::read
    /// finds none.
    bool load(const QString& path);

    /// Shows this picture; a null one empties the box.
    void setPicture(const Picture& picture);

    /// Shows this text in the place of a picture.
    void setText(const QString& text);

    /// The text in the place of a picture; "" when there is none.
    QString text() const { return text_; }

    /// Empties the box.
    void clear() { setPicture({}); }

    /// The picture as loaded; null when the box is empty.
    const Picture& picture() const { return picture_; }

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void paintPicture(QPainter& painter);

    Picture picture_;
    QString text_;
    /// The picture at the size last painted; null when there is none yet.
    QPixmap scaled_;
};

}  // namespace varo::ui
