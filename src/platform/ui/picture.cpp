#include "platform/ui/picture.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace varo::ui {

namespace {

/// Pixels of the longer side that no window on screen shows more of, as a rule.
constexpr int kEnoughPixels = 2048;

/// A side of the image that a drawing is tried on.
constexpr int kTrialSide = 256;

/// Bytes that a drawing takes at most: its records, the patterns that it fills with, and one of the
/// bitmaps in it.
constexpr qint64 kDrawingMemory = qint64{192} * 1024 * 1024;

}  // namespace

Picture Picture::read(const QString& path, qint64 pixelLimit) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > rasterFileLimit(pixelLimit)) {
        return {};
    }
    return fromBytes(file.readAll(), pixelLimit, kEnoughPixels);
}

Picture Picture::fromBytes(const QByteArray& data, qint64 pixelLimit, int enough,
                           const MemoryRequest& memory) {
    Picture picture;
    if (!Metafile::isMetafile(data)) {
        RasterPicture raster = readRaster(data, pixelLimit, enough, memory);
        if (!raster.image.isNull()) {
            picture.size_ = raster.size;
            picture.pixels_ = std::move(raster.image);
        }
        return picture;
    }
    if (memory && !memory(kDrawingMemory)) {
        return {};
    }
    picture.drawing_ = Metafile::read(data);
    if (!picture.drawing_) {
        return {};
    }
    const QSizeF size = picture.drawing_->size();
    if (size.width() * size.height() > static_cast<qreal>(pixelLimit)) {
        return {};
    }
    picture.size_ = size.toSize().expandedTo({1, 1});
    const QSize trial = picture.size_.scaled(kTrialSide, kTrialSide, Qt::KeepAspectRatio);
    picture.pixels_ = picture.drawing_->image(trial.expandedTo({1, 1}));
    return picture.pixels_.isNull() ? Picture() : picture;
}

QImage Picture::image(QSize size) const {
    if (drawing_) {
        if (QImage drawn = drawing_->image(size); !drawn.isNull()) {
            return drawn;
        }
        drawing_.reset();
    }
    return pixels_.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

}  // namespace varo::ui
