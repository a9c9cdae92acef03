#pragma once

#include <QByteArray>
#include <QString>

namespace varo {

/// Most bytes of a text, and of a picture or drawing that a text names.
inline constexpr qint64 kTextFileLimit = qint64{512} << 20;
inline constexpr qint64 kPictureFileLimit = qint64{256} << 20;

/// The content of the file at `path`, which must be a regular file or a link to one and not larger
/// than `limit` bytes; anything else could be read for ever. Throws TextError.
QByteArray readInputFile(const QString& path, qint64 limit);

}  // namespace varo
