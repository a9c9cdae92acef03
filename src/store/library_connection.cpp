#include "store/library_connection.h"

#include "store/library_structure.h"

#include <QDir>
#include <QFileInfo>

namespace varo {

bool ConnectLibrary(const QString& folder, const QString& fileName, data::Connection& connection,
                    const QString& password) {
    connection.close();
    // None of the formats that are read has passwords.
    return password.isEmpty() && openLibrary(folder, fileName, connection) == OpenFailure::None;
}

OpenFailure openLibrary(const QString& folder, const QString& fileName,
                        data::Connection& connection) {
    const QString path = normalisedFolder(folder) + fileName;
    OpenFailure failure = OpenFailure::Structure;
    try {
        connection.open(path);
        if (keepsRows(connection)) {
            return OpenFailure::None;
        }
    } catch (const data::Error& error) {
        const QFileInfo file(path);
        failure = error.isLocked()     ? OpenFailure::Locked
                  : !file.exists()     ? OpenFailure::Missing
                  : !file.isReadable() ? OpenFailure::NotPermitted
                                       : OpenFailure::NoLibrary;
    }
    connection.close();
    return failure;
}

void CloseRecordset(data::Recordset& recordSet) noexcept {
    recordSet.close();
}

void SplitFilePath(const QString& path, QString& folder, QString& fileName) {
    const QString native = normalisedPath(path);
    const qsizetype nameStart = native.lastIndexOf(QDir::separator()) + 1;
    folder = native.left(nameStart);
    fileName = native.mid(nameStart);
}

QString normalisedPath(const QString& path) {
    QString native = path;
    native.replace(u'\\', QDir::separator());
    native.replace(u'/', QDir::separator());
    return native;
}

QString normalisedFolder(const QString& folder) {
    QString native = normalisedPath(folder);
    if (native.isEmpty()) {
        return native;
    }
    while (native.endsWith(QDir::separator())) {
        native.chop(1);
    }
    return native + QDir::separator();
}

}  // namespace varo
