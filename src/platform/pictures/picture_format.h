#pragma once

#include <QByteArrayView>

namespace varo {

/// The formats that a formula's picture may have.
enum class PictureFormat {
    None,
    Bmp,
    Jpeg,
    Png,
    Metafile,        ///< wmf
    PlacedMetafile,  ///< wmf with a placement header
};

/// How many of a file's first bytes tell the format of a picture.
inline constexpr qsizetype kPictureHead = 22;

/// The format that a file has by its signature, whatever its name; `head` are its first bytes,
/// kPictureHead or more of them if it has so many.
PictureFormat pictureFormatOf(QByteArrayView head);

}  // namespace varo
