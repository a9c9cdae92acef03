#pragma once

#include <QByteArrayView>
#include <QImage>

namespace varo::ui {

/// The picture in a bitmap that stands inside a drawing, which has no file header. Null when the
/// bytes are no such bitmap, end before it does, or hold too many pixels for a part of a drawing.
QImage bitmapIn(QByteArrayView bits);

}  // namespace varo::ui
