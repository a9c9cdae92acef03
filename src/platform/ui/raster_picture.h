#pragma once

#include <QByteArray>
#include <QImage>

namespace varo::ui {

/// A picture made of pixels.
struct RasterPicture {
    QSize size;    ///< as the file has it, turned upright
    QImage image;  ///< the same picture, perhaps in fewer pixels; null when there is none
};

/// The picture in a file's content of at most `pixelLimit` pixels, its format (bmp, jpg or png)
/// told by the content and turned upright where it says how it was taken. It is read in fewer
/// pixels as long as its longer side keeps `enough` of them. The image is null when the content is
/// no such picture or ends before the picture does.
RasterPicture readRaster(QByteArray data, qint64 pixelLimit, int enough);

/// Most bytes that the file of such a picture may have.
qint64 rasterFileLimit(qint64 pixelLimit);

}  // namespace varo::ui
