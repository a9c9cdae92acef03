#include "platform/shared_folder/shared_folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <dlfcn.h>

namespace varo {

namespace {

/// The program or shared object that holds this code; "" when that cannot be told.
QString ownFile() {
    // A variable: the address of a function may be that of an entry in the program's own table.
    static const char anchor = 0;
    Dl_info found{};
    return dladdr(&anchor, &found) == 0
               ? QString()
               : QFileInfo(QFile::decodeName(found.dli_fname)).canonicalFilePath();
}

bool isProgram(const QString& file) {
    return file == QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
}

QStringList candidates() {
    const QString named = qEnvironmentVariable(kSharedFolderVariable);
    if (!named.isEmpty()) {
        return {named};
    }
    const QString file = ownFile();
    const QString buildTree = QFileInfo(QStringLiteral(VARO_BUILD_TREE)).canonicalFilePath();
    if (!buildTree.isEmpty() && file.startsWith(buildTree + u'/')) {
        return {QStringLiteral(VARO_BUILT_SHARED_FOLDER)};
    }
    const QString installed = QStringLiteral(VARO_INSTALLED_SHARED_FOLDER);
    if (file.isEmpty()) {
        return {installed};
    }
    const QDir beside = QFileInfo(file).dir();
    QStringList folders{beside.filePath(QStringLiteral("share/varo")),
                        beside.filePath(QStringLiteral("../share/varo"))};
    if (isProgram(file)) {
        folders.append(installed);
    }
    return folders;
}

}  // namespace

std::optional<QString> GetVaroSharedFolder() {
    for (const QString& folder : candidates()) {
        const QFileInfo info(folder);
        if (info.isDir()) {
            return QDir::toNativeSeparators(QDir::cleanPath(info.absoluteFilePath())) +
                   QDir::separator();
        }
    }
    return std::nullopt;
}

}  // namespace varo
