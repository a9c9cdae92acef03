#include "platform/data/copy_database.h"

#include "platform/data/create_database.h"
#include "platform/data/file_start.h"
#include "platform/data/unfinished_file.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QSaveFile>

namespace varo::data {

namespace {

[[noreturn]] void fail(const QFileDevice& file) {
    throw Error(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
}

void write(QSaveFile& file, const QByteArray& bytes) {
    if (file.write(bytes) != bytes.size()) {
        fail(file);
    }
}

void commit(QSaveFile& file) {
    // A full disk makes flush() fail, but not commit().
    if (!file.flush() || !file.commit()) {
        fail(file);
    }
}

/// Passes the file's bytes on while nobody can change them, and returns their SHA-256.
QByteArray readWhole(Connection& connection, const std::function<void(const QByteArray&)>& take) {
    const ReadSnapshot snapshot(connection);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    readBytes(connection.path(), [&](const QByteArray& bytes) {
        hash.addData(bytes);
        take(bytes);
    });
    return hash.result();
}

}  // namespace

QByteArray databaseDigest(Connection& connection) {
    return readWhole(connection, [](const QByteArray&) {});
}

void copyDatabase(Connection& connection, const QString& path,
                  const std::function<void(const QByteArray& digest)>& beforeItAppears) {
    QSaveFile copy(path);
    if (!copy.open(QIODevice::WriteOnly)) {
        fail(copy);
    }
    beforeItAppears(readWhole(connection, [&](const QByteArray& bytes) { write(copy, bytes); }));
    commit(copy);
}

void copyDatabase(const QString& source, const QString& target) {
    Connection connection;
    connection.open(source);
    const QString path = QFileInfo(target).absoluteFilePath();
    const UnfinishedFile unfinished(path);
    copyDatabase(connection, unfinished.path(), [](const QByteArray&) {});
    replaceDatabase(unfinished.path(), path);
}

void restoreDatabase(const QString& copy, const QString& path) {
    const QFileInfo link(path);
    const QString target = link.exists() ? link.canonicalFilePath() : link.absoluteFilePath();
    const UnfinishedFile unfinished(target);
    QSaveFile file(unfinished.path());
    if (!file.open(QIODevice::WriteOnly)) {
        fail(file);
    }
    readBytes(copy, [&](const QByteArray& bytes) { write(file, bytes); });
    if (link.exists()) {
        file.setPermissions(link.permissions());
    }
    commit(file);
    replaceDatabase(unfinished.path(), target);
}

}  // namespace varo::data
