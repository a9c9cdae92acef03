#include "library/input_file.h"

#include "library/text_error.h"
#include "platform/files/regular_file.h"

#include <QFile>

#include <cerrno>

namespace varo {

QByteArray readInputFile(const QString& path, qint64 limit) {
    QFile file(path);
    if (const auto problem = openRegularFile(file); problem == RegularFileProblem::NotRegular) {
        throw TextError(path, QStringLiteral("this is no regular file"));
    } else if (problem != RegularFileProblem::None) {
        throw TextError(path, qt_error_string(errno));
    }
    const qint64 size = file.size();
    if (size > limit) {
        throw TextError(path, QStringLiteral("the file is larger than %1 MiB").arg(limit >> 20));
    }
    const QByteArray content = file.read(size);
    if (file.error() != QFileDevice::NoError) {
        throw TextError(path, file.errorString());
    }
    return content;
}

}  // namespace varo
