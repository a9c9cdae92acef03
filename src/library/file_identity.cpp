#include "library/file_identity.h"

#include "platform/data/error.h"
#include "platform/data/file_start.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace varo {

namespace {

/// The number of commits in the file's header; 0 when it cannot be read.
quint32 commitsTo(const QString& path) {
    constexpr int kCounter = 24;
    constexpr int kEnd = kCounter + static_cast<int>(sizeof(quint32));
    try {
        const QByteArray start = data::fileStart(path, kEnd);
        return start.size() < kEnd ? 0 : qFromBigEndian<quint32>(start.constData() + kCounter);
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
