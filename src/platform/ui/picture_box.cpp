#include "platform/ui/picture_box.h"

#include <QPainter>

namespace varo::ui {

PictureBox::PictureBox(QWidget* parent) : QWidget(parent) {}

bool PictureBox::load(const QString& path) {
    const Picture picture = Picture::read(path);
    if (picture.isNull()) {
        return false;
    }
    setPicture(picture);
    return true;
}

void PictureBox::setPicture(const Picture& picture) {
    picture_ = picture;
    scaled_ = {};
    update();
}

QSize PictureBox::sizeHint() const {
    return {160, 120};
}

void PictureBox::paintEvent(QPaintEvent*) {
    if (picture_.isNull()) {
        return;
    }
    const qreal ratio = devicePixelRatioF();
    const QSize box = (QSizeF(size()) * ratio).toSize();
    const QSize shown = picture_.size().scaled(box, Qt::KeepAspectRatio).expandedTo({1, 1});
    if (scaled_.size() != shown) {
        scaled_ = QPixmap::fromImage(picture_.image(shown));
    }
    scaled_.setDevicePixelRatio(ratio);

    // On whole device pixels, or the picture would be blurred.
    const QPointF corner =
        QPointF((box.width() - shown.width()) / 2, (box.height() - shown.height()) / 2);
    QPainter(this).drawPixmap(corner / ratio, scaled_);
}

}  // namespace varo::ui
