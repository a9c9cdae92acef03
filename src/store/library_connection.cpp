#include "store/library_connection.h"

#include "store/library_structure.h"

#include <QDir>

namespace varo {

bool ConnectLibrary(const QString& folder, const QString& fileName, data::Connection& connection,
                    const QString& password) {
    connection.close();
    if (!password.isEmpty()) {
        return false;  // none of the formats that are read has passwords
    }
    try {
        connection.open(normalisedFolder(folder) + fileName);
        if (keepsRows(connection)) {
            return true;
        }
    } catch (const data::Error&) {  // the same as a file that is no library
    }
    connection.close();
    return false;
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
