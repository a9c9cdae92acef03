#pragma once

#include "platform/data/access.h"
#include "platform/data/side_files.h"

#include <QTemporaryDir>

#include <memory>

namespace varo::data {

/// Throws Error unless `folder` has room for `bytes` more, as far as that can be told.
void requireRoom(const QString& folder, qint64 bytes);

/// A copy of an SQLite database and of what lies beside it, which goes away with this. Recovering
/// the copy changes nothing of the original.
class SqliteCopy {
  public:
    /// Copies the database at `path`, the one with this header. Throws Error when another program
    /// is in the middle of something with it, when what lies beside it is not of this database,
    /// when there is no room for the copy, or when it is larger than Access::Glance allows.
    SqliteCopy(const QString& path, const DatabaseHeader& header, Access access);

    /// Path of the copy.
    QString path() const { return folder_.filePath(QStringLiteral("database")); }

  private:
    QTemporaryDir folder_;
};

}  // namespace varo::data
