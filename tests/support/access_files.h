#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace varo::test {

/// Copies of the Access files in the folder that the environment variable VARO_ACCESS_FILES names;
/// none without it. They last as long as the program, and may be written.
inline QStringList accessFiles() {
    static const QTemporaryDir copies;
    const QString folder = qEnvironmentVariable("VARO_ACCESS_FILES");
    QStringList paths;
    if (!folder.isEmpty()) {
        for (const QFileInfo& file :
             QDir(folder).entryInfoList({QStringLiteral("*.mdb"), QStringLiteral("*.accdb")})) {
            const QString copy = copies.filePath(file.fileName());
            if (!QFile::exists(copy) && QFile::copy(file.filePath(), copy)) {
                QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner);
            }
            paths.append(copy);
        }
    }
    return paths;
}

/// The one of them with this name; "" when there is none.
inline QString accessFile(const QString& name) {
    const QStringList paths = accessFiles().filter(QChar(u'/') + name);
    return paths.isEmpty() ? QString() : paths.front();
}

/// How many copies of each of them are damaged: VARO_ACCESS_COPIES, 20 without it.
inline int damagedCopies() {
    const int count = qEnvironmentVariableIntValue("VARO_ACCESS_COPIES");
    return count > 0 ? count : 20;
}

}  // namespace varo::test
