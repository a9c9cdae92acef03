#include "library/file_identity.h"

#include "platform/data/error.h"
#include "platform/data/side_files.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace varo {

namespace {

/// The number of commits in the file's header; 0 when it cannot be read.
quint32 commitsTo(const QString& path) {
    try {
        return data::databaseHeader(path).value_or(data::DatabaseHeader()).changes;
    } catch (const data::Error&) {
        return 0;
    }
}

}  // namespace

FileIdentity FileIdentity::of(const QString& path) {
    FileIdentity identity;
    identity.path = path;
    identity.birth = QFileInfo(path).birthTime();
    identity.changes = commitsTo(path);
#ifdef Q_OS_UNIX
    struct stat found {};
    if (::stat(QFile::encodeName(path).constData(), &found) == 0) {
        identity.device = found.st_dev;
        identity.number = found.st_ino;
    }
#endif
    return identity;
}

bool FileIdentity::isStillThere() const {
    const FileIdentity now = of(path);
    return now.device == device && now.number == number && now.birth == birth &&
           now.changes >= changes;
}

}  // namespace varo
