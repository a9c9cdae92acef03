#pragma once

#include "platform/ui/metafile.h"
#include "platform/ui/raster_picture.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace varo::ui {

/// A picture read from a file, whatever the file's name; the content decides its format: pixels
/// (bmp, jpg, png) or a drawing (wmf).
class Picture {
  public:
    Picture() = default;

    /// Null when the file holds no picture, ends early, or would take more than `pixelLimit`
    /// pixels. The file is not kept open.
    static Picture read(const QString& path, qint64 pixelLimit = kPixelLimit);

    /// The same from the content of a file, read in fewer pixels as long as its longer side keeps
    /// `enough` of them. `memory` is asked for what reading and drawing take. Can be called in any
    /// thread.
    static Picture fromBytes(const QByteArray& data, qint64 pixelLimit, int enough,
                             const MemoryRequest& memory = {});

    bool isNull() const { return size_.isEmpty(); }

    /// Width and height in pixels; of a drawing, at 96 to the inch.
    QSize size() const { return size_; }

    /// The picture at `size`, not empty, whose proportions are kept only if `size` has them. A
    /// drawing that once drew too much is from then on scaled from a small version.
    QImage image(QSize size) const;

    /// Most pixels that a picture may have.
    static constexpr qint64 kPixelLimit = 100'000'000;

  private:
    QSize size_;
    QImage pixels_;  ///< of a drawing, a small version that is scaled where no other could be drawn
    mutable std::optional<Metafile> drawing_;  ///< as long as it does not draw too much
};

}  // namespace varo::ui
