#pragma once

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varo {

enum class RegularFileProblem { None, Missing, NotRegular, NotReadable };

/// Opens the file with this name for reading, if it is a regular one. What it is is asked of the
/// open file, so that nothing else can come in its place after that; a FIFO without a writer is not
/// waited for. errno tells the reason of NotReadable.
inline RegularFileProblem openRegularFile(QFile& file) {
    using enum RegularFileProblem;
    const int descriptor = ::open(QFile::encodeName(file.fileName()).constData(),
                                  O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        return errno == ENOENT || errno == ENOTDIR ? Missing
               : errno == ENXIO                    ? NotRegular  // a socket
                                                   : NotReadable;
    }
    struct stat opened {};
    if (::fstat(descriptor, &opened) == 0 && S_ISREG(opened.st_mode) &&
        file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        return None;
    }
    ::close(descriptor);
    return NotRegular;
}

}  // namespace varo
