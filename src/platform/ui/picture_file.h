#pragma once

#include <QImage>
#include <QString>

namespace varo::ui {

/// The picture in a file of at most `pixelLimit` pixels, its format (bmp, jpg or png) told by its
/// content and turned upright where the file says how it was taken. Null when the file holds no
/// such picture or ends before the picture does.
QImage readPicture(const QString& path, qint64 pixelLimit);

}  // namespace varo::ui
