#include "store/library_connection.h"

#include "store/library_structure.h"

#include <QDir>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

namespace varo {

bool ConnectLibrary(const QString& folder, const QString& fileName, data::Connection& connection,
                    const QString& password) {
    connection.close();
    // None of the formats that are read has passwords.
    return password.isEmpty() &&
           openLibrary(folder, fileName, connection).failure == OpenFailure::None;
}

OpenResult openLibrary(const QString& folder, const QString& fileName, data::Connection& connection,
                       data::Access access) {
    const QString path = normalisedFolder(folder) + fileName;
    OpenResult result{OpenFailure::Structure, {}, {}};
    try {
        connection.open(path, access);
        if (keepsRows(connection)) {
            return {};
        }
    } catch (const data::Error& error) {
        const OpenFailure failure = error.isLocked()                ? OpenFailure::Locked
                                    : isMissing(path)               ? OpenFailure::Missing
                                    : !QFileInfo(path).isReadable() ? OpenFailure::NotPermitted
                                                                    : OpenFailure::NoLibrary;
        result = {failure, error.cause(), error.description()};
    }
    connection.close();
    return result;
}

bool isMissing(const QString& path) {
    std::error_code failure;
    const auto status = std::filesystem::status(QFileInfo(path).filesystemFilePath(), failure);
    return status.type() == std::filesystem::file_type::not_found;
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
