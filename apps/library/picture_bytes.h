#pragma once

#include "library/library_rows.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace varo {

/// How many of a picture's first bytes tell its format.
inline constexpr qsizetype kPictureHead = 22;

/// True when a file that begins with `head` (kPictureHead bytes or more, if it has them) says by its
/// signature that it is a picture of one of the formats that a library may hold: bmp, jpg, png,
/// wmf.
bool isPicture(QByteArrayView head);

/// The bytes to store for `picture`, which stands in the text at `textPath`. A file is taken as it
/// stands and must be a picture; an .svg drawing is rendered on white, its proportions kept, in the
/// wanted format and size (without one, its own). The same drawing gives the same bytes. Needs a
/// QGuiApplication. Throws TextError with the place of the picture in the text.
QByteArray pictureBytes(const PictureText& picture, const QString& textPath);

}  // namespace varo
