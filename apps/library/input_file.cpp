#include "library/input_file.h"

#include "library/text_error.h"

#include <QFile>
#include <QFileInfo>

namespace varo {

QByteArray readInputFile(const QString& path, qint64 limit) {
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        throw TextError(path, QStringLiteral("this is no regular file"));
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw TextError(path, file.errorString());
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
