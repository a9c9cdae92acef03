#pragma once

#include "library/library_rows.h"

#include <QByteArray>
#include <QCache>
#include <QString>

namespace varo {

/// Most bytes of the pictures of a library that is built from a text.
inline constexpr qint64 kMostPictureBytes = qint64{4} << 30;

/// Makes the pictures of one library from its text. While it lives, a drawing that is wanted again
/// in the same format and size is not rendered again, as long as all that is kept has at most 256
/// MiB.
class PictureReader {
  public:
    /// For the text at `textPath`, and pictures of `mostBytes` in all.
    explicit PictureReader(const QString& textPath, qint64 mostBytes = kMostPictureBytes)
        : textPath_(textPath), mostBytes_(mostBytes) {}

    /// The bytes to store for `picture`. A file is taken as it stands and must be a picture; an
    /// .svg drawing is rendered on white, its proportions kept, in the wanted format and size
    /// (without one, its own). The same drawing gives the same bytes. Needs a QGuiApplication.
    /// Throws TextError with the place of the picture in the text.
    QByteArray read(const PictureText& picture);

  private:
    QByteArray readFile(const PictureText& picture);
    QByteArray render(const PictureText& picture, const QString& path);
    QByteArray contentOf(const PictureText& picture, const QString& path) const;
    [[noreturn]] void fail(const PictureText& picture, const QString& message) const;

    QString textPath_;
    qint64 mostBytes_;
    qint64 bytes_ = 0;  ///< of the pictures so far
    QCache<QString, QByteArray> rendered_{qsizetype{256} << 20};
};

}  // namespace varo
