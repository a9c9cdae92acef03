#pragma once

#include <QByteArray>
#include <QString>

namespace varo::test {

/// Makes the library at `path`, which has the folder 1, one of 100 formulas in that folder whose
/// pictures are all in the same pages of the file. Returns what they take together in files of
/// their own.
qint64 sharePictures(const QString& path);

}  // namespace varo::test
