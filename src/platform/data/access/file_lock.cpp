#include "platform/data/access/file_lock.h"

#include "platform/data/access/file_layer.h"
#include "platform/data/error.h"
#include "platform/data/sqlite_handle.h"

#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>

namespace varo::access {

namespace {

constexpr int kBetweenTries = 10'000;  ///< microseconds

struct flock rangeOf(LockByte byte, short kind) {
    // No Access file is so long.
    constexpr off_t kFirst = 0x7FFF'FF00;
    struct flock range {};
    range.l_type = kind;
    range.l_whence = SEEK_SET;
    range.l_start = kFirst + static_cast<off_t>(byte);
    range.l_len = 1;
    return range;
}

bool setLock(int descriptor, LockByte byte, short kind) noexcept {
    struct flock range = rangeOf(byte, kind);
    return ::fcntl(descriptor, F_OFD_SETLK, &range) == 0;
}

}  // namespace

void lock(int descriptor, LockByte byte, LockKind kind, int wait) {
    const short wanted = kind == LockKind::Shared ? F_RDLCK : F_WRLCK;
    for (int tries = 1; !setLock(descriptor, byte, wanted); ++tries) {
        if (errno != EAGAIN && errno != EACCES && errno != EINTR) {
            throwSystemError();
        }
        if (tries > wait * 1000 / kBetweenTries) {
            throw data::Error(byte == LockByte::Readers && kind == LockKind::Alone
                                  ? QStringLiteral("another program is reading the file")
                                  : QStringLiteral("another program is writing to the file"),
                              data::Error::Cause::Locked);
        }
        FileLayer::current().sleep(kBetweenTries);
    }
}

void unlock(int descriptor, LockByte byte) noexcept {
    setLock(descriptor, byte, F_UNLCK);
}

bool isLockedByOther(int descriptor, LockByte byte) {
    struct flock range = rangeOf(byte, F_WRLCK);
    if (::fcntl(descriptor, F_OFD_GETLK, &range) != 0) {
        throwSystemError();
    }
    return range.l_type != F_UNLCK;
}

QString accessLockFile(const QString& path) {
    const QFileInfo file(path);
    const QString base = file.completeBaseName();
    const QString names[] = {base + QStringLiteral(".ldb"), base + QStringLiteral(".laccdb")};
    std::error_code failure;
    using Entries = std::filesystem::directory_iterator;
    const auto folder = QFileInfo(file.absolutePath()).filesystemFilePath();
    for (Entries entry(folder, failure); !failure && entry != Entries(); entry.increment(failure)) {
        const QString name = QString::fromStdString(entry->path().filename().string());
        for (const QString& wanted : names) {
            if (name.compare(wanted, Qt::CaseInsensitive) == 0) {
                return QString::fromStdString(entry->path().string());
            }
        }
    }
    return {};
}

}  // namespace varo::access
