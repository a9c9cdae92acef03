#pragma once

#include <QDateTime>
#include <QString>

namespace varo {

/// Which file is at a path, so that it can be told later whether another one has taken its place.
struct FileIdentity {
    QString path;
    quint64 device = 0;  ///< with `number`, the file in its file system; 0 when nothing is there
    quint64 number = 0;
    QDateTime birth;      ///< invalid where the file system does not keep it
    quint32 changes = 0;  ///< commits to the database in it

    /// That of the file that is at `path`.
    static FileIdentity of(const QString& path);

    /// Whether the path has the same file still, changed or not. A file that was overwritten in
    /// place is told from the former one when it has had fewer commits.
    bool isStillThere() const;
};

}  // namespace varo
