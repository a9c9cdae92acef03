#pragma once

#include <QByteArray>
#include <QImage>

#include <functional>

namespace varo::ui {

/// A picture made of pixels.
struct RasterPicture {
    QSize size;    ///< as the file has it, turned upright
    QImage image;  ///< the same picture, perhaps in fewer pixels; null when there is none
};

/// Asked for the bytes of memory that reading a picture takes, before they are taken; false refuses
/// them.
using MemoryRequest = std::function<bool(qint64 bytes)>;

/// The picture in a file's content of at most `pixelLimit` pixels, its format (bmp, jpg or png)
/// told by the content and turned upright where it says how it was taken. It is read in fewer
/// pixels as long as its longer side keeps `enough` of them. The image is null when the content is
/// no such picture or ends before the picture does, or when `memory` refuses what it takes.
RasterPicture readRaster(QByteArray data, qint64 pixelLimit, int enough,
                         const MemoryRequest& memory = {});

/// Most bytes that the file of such a picture may have.
qint64 rasterFileLimit(qint64 pixelLimit);

}  // namespace varo::ui
