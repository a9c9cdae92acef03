#include "platform/ui/picture_box.h"

#include "platform/ui/focus_label.h"

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
    text_.clear();
    update();
}

void PictureBox::setText(const QString& text) {
    clear();
    text_ = text;
}

QSize PictureBox::sizeHint() const {
    return {160, 120};
}

void PictureBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (picture_.isNull()) {
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, text_);
    } else {
        paintPicture(painter);
    }
    paintFocus(painter, *this);
}

void PictureBox::paintPicture(QPainter& painter) {
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
    painter.drawPixmap(corner / ratio, scaled_);
}

}  // namespace varo::ui
