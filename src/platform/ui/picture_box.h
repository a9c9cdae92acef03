#pragma once

#include <QImage>
#include <QPixmap>
#include <QWidget>

namespace varo::ui {

/// Shows a picture scaled to the box with its proportions kept, centred, sharp at every scale.
class PictureBox : public QWidget {
    Q_OBJECT

  public:
    explicit PictureBox(QWidget* parent = nullptr);

    /// Loads the picture in the file, whatever the file's name; its format is told by its content
    /// (bmp, jpg, png). Returns false, leaving the box as it was, when the file holds no picture,
    /// ends early, or holds more pixels than PictureLimit. The file is not kept open.
    bool load(const QString& path);

    /// Empties the box.
    void clear();

    /// The picture as loaded; null when the box is empty.
    const QImage& picture() const { return picture_; }

    QSize sizeHint() const override;

    /// Most pixels that a picture may have.
    static constexpr qint64 PictureLimit = 100'000'000;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QImage picture_;
    /// The picture at the size last painted; null when there is none yet.
    QPixmap scaled_;
};

}  // namespace varo::ui
