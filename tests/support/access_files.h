#pragma once

#include <QDir>
#include <QString>
#include <QStringList>

namespace varo::test {

/// The Access files in the folder that the environment variable VARO_ACCESS_FILES names; none
/// without it.
inline QStringList accessFiles() {
    const QString folder = qEnvironmentVariable("VARO_ACCESS_FILES");
    QStringList paths;
    if (!folder.isEmpty()) {
        for (const QFileInfo& file :
             QDir(folder).entryInfoList({QStringLiteral("*.mdb"), QStringLiteral("*.accdb")})) {
            paths.append(file.absoluteFilePath());
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
