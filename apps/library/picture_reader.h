#pragma once

#include "library/library_rows.h"

#include <QByteArray>
#include <QCache>
#include <QString>

#include <chrono>

namespace varo {

/// Most bytes of the pictures of a library that is built from a text.
inline constexpr qint64 kMostPictureBytes = qint64{4} << 30;

/// Longest time that rendering the drawings of such a library may take together.
inline constexpr std::chrono::milliseconds kMostDrawingTime = std::chrono::minutes(10);

/// Makes the pictures of one library from its text. While it lives, a drawing that is wanted again
/// in the same format and size is not rendered again, as long as all that is kept has at most 256
/// MiB.
class PictureReader {
  public:
    /// For the text at `textPath`, and pictures of `mostBytes` in all, drawings among them that are
    /// begun to be rendered within `mostTime` of rendering.
    explicit PictureReader(const QString& textPath, qint64 mostBytes = kMostPictureBytes,
                           std::chrono::milliseconds mostTime = kMostDrawingTime)
        : textPath_(textPath), mostBytes_(mostBytes), mostTime_(mostTime) {}

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
    std::chrono::milliseconds mostTime_;
    qint64 bytes_ = 0;                            ///< of the pictures so far
    std::chrono::steady_clock::duration time_{};  ///< of rendering so far
    QCache<QString, QByteArray> rendered_{qsizetype{256} << 20};
};

}  // namespace varo
