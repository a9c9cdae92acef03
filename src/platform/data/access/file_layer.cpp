#include "platform/data/access/file_layer.h"

#include "platform/data/error.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varo::access {

namespace {

FileLayer* replacement = nullptr;

void check(int result) {
    if (result != 0) {
        throwSystemError();
    }
}

}  // namespace

void throwSystemError() {
    throw data::Error(QString::fromLocal8Bit(std::strerror(errno)));
}

int FileLayer::create(const QString& path, unsigned permissions) {
    const int descriptor =
        ::open(QFile::encodeName(path).constData(),
               O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0) {
        throwSystemError();
    }
    // A file system without permissions of its own refuses this, and needs none.
    if (::fchmod(descriptor, permissions) != 0 && errno != EPERM && errno != EOPNOTSUPP) {
        const int error = errno;
        ::close(descriptor);
        ::unlink(QFile::encodeName(path).constData());
        errno = error;
        throwSystemError();
    }
    return descriptor;
}

void FileLayer::write(int descriptor, const QByteArray& bytes, qint64 offset) {
    qint64 count = 0;
    while (count < bytes.size()) {
        const ssize_t piece =
            ::pwrite(descriptor, bytes.constData() + count,
                     static_cast<std::size_t>(bytes.size() - count), offset + count);
        if (piece < 0 && errno != EINTR) {
            throwSystemError();
        }
        count += std::max<ssize_t>(piece, 0);
    }
}

void FileLayer::resize(int descriptor, qint64 size) {
    check(::ftruncate(descriptor, size));
}

void FileLayer::sync(int descriptor) {
    check(::fsync(descriptor));
}

void FileLayer::remove(const QString& path) {
    check(::unlink(QFile::encodeName(path).constData()));
}

void FileLayer::syncFolderOf(const QString& path) {
    const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        throwSystemError();
    }
    const int result = ::fsync(descriptor);
    const int error = errno;
    ::close(descriptor);
    // Some file systems cannot synchronize a folder; they do without.
    if (result != 0 && error != EINVAL) {
        errno = error;
        throwSystemError();
    }
}

void FileLayer::sleep(int microseconds) {
    ::usleep(static_cast<useconds_t>(microseconds));
}

FileLayer& FileLayer::current() {
    static FileLayer system;
    return replacement == nullptr ? system : *replacement;
}

void FileLayer::setCurrent(FileLayer* layer) {
    replacement = layer;
}

QByteArray readAt(int descriptor, qint64 offset, qint64 size) {
    QByteArray bytes(size, Qt::Uninitialized);
    qint64 count = 0;
    while (count < size) {
        const ssize_t piece = ::pread(descriptor, bytes.data() + count,
                                      static_cast<std::size_t>(size - count), offset + count);
        if (piece == 0) {
            break;
        }
        if (piece < 0 && errno != EINTR) {
            throwSystemError();
        }
        count += std::max<ssize_t>(piece, 0);
    }
    bytes.truncate(count);
    return bytes;
}

}  // namespace varo::access
