#pragma once

#include "library/library_rows.h"

#include <QByteArray>
#include <QString>

namespace varo {

/// The bytes to store for `picture`, which stands in the text at `textPath`. A file is taken as it
/// stands and must be a picture; an .svg drawing is rendered on white, its proportions kept, in the
/// wanted format and size (without one, its own). The same drawing gives the same bytes. Needs a
/// QGuiApplication. Throws TextError with the place of the picture in the text.
QByteArray pictureBytes(const PictureText& picture, const QString& textPath);

}  // namespace varo
