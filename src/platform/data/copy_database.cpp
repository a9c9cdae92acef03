#include "platform/data/copy_database.h"

#include "platform/data/access/whole_file.h"
#include "platform/data/create_database.h"
#include "platform/data/file_start.h"
#include "platform/data/sqlite_handle.h"
#include "platform/data/unfinished_file.h"
#include "platform/files/save_file.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QUrl>
#include <QtEndian>

#include <memory>
#include <optional>
#include <sqlite3.h>

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
    if (!commitWritten(file)) {
        fail(file);
    }
}

/// Gives the closed database at `path`, which nobody else knows of, a mark of its own.
void setNewMark(const QString& path) {
    QFile file(path);
    const quint32 mark = qToBigEndian(static_cast<quint32>(newMark()));
    constexpr qint64 kSize = sizeof mark;
    if (!file.open(QIODevice::ReadWrite) || !file.seek(kMarkPlace) ||
        file.write(reinterpret_cast<const char*>(&mark), kSize) != kSize || !file.flush()) {
        fail(file);
    }
}

/// Passes the file's bytes on while nobody can change them.
void readWhole(Connection& connection, const std::function<void(const QByteArray&)>& take) {
    const ReadSnapshot snapshot(connection);
    readBytes(connection.path(), take);
}

/// Digests the pieces of a file that another one, the base, has not in the same place.
class Difference {
  public:
    explicit Difference(const QString& base) : base_(base) {
        if (!base_.open(QIODevice::ReadOnly)) {
            fail(base_);
        }
    }

    void add(const QByteArray& piece) {
        if (base_.read(piece.size()) != piece) {
            addNumber(offset_);
            addNumber(piece.size());
            hash_.addData(piece);
        }
        offset_ += piece.size();
    }

    QByteArray result() {
        if (base_.size() > offset_) {
            addNumber(offset_);
        }
        return hash_.result();
    }

  private:
    void addNumber(qint64 number) { hash_.addData(QByteArray::number(number).rightJustified(20)); }

    QFile base_;
    QCryptographicHash hash_{QCryptographicHash::Sha256};
    qint64 offset_ = 0;
};

[[noreturn]] void fail(const QString& path, int result) {
    throw Error(QStringLiteral("%1: %2").arg(path, QString::fromUtf8(sqlite3_errstr(result))));
}

/// The database at `path`, with what a killed program has left half-written taken back; nothing
/// when it is damaged.
std::optional<SafeHandle> openRecovered(const QString& path, const DatabaseHeader& header) {
    SafeHandle safe = openSafely(path, header, Access::Write);
    const int result = safe.watch->readSchema();
    if (result == SQLITE_NOTADB || result == SQLITE_CORRUPT) {
        return std::nullopt;
    }
    if (result != SQLITE_OK) {
        fail(path, result);
    }
    return safe;
}

/// A closed database that nobody changes, opened without locks and side files.
DatabaseHandle openCopy(const QString& path) {
    const QByteArray address =
        QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded() + "?immutable=1";
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(address.constData(), &opened,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    DatabaseHandle handle(opened);
    if (result != SQLITE_OK) {
        fail(path, result);
    }
    return handle;
}

/// Throws Error when the file at `path`, which nobody can change, is not as `difference` says.
void requireDifference(const QString& path, const QString& copy, const QByteArray& difference) {
    Difference found(copy);
    readBytes(path, [&](const QByteArray& bytes) { found.add(bytes); });
    if (found.result() != difference) {
        throw Error(QStringLiteral("%1: another program has changed the file").arg(path));
    }
}

/// Gives an open database the content of `copy`, or throws Error and leaves it as it is.
void overwrite(sqlite3* database, const QString& path, const QString& copy,
               const QByteArray& difference) {
    const DatabaseHandle source = openCopy(copy);
    const std::unique_ptr<sqlite3_backup, int (*)(sqlite3_backup*)> backup(
        sqlite3_backup_init(database, "main", source.get(), "main"), sqlite3_backup_finish);
    // A step without pages locks the database against everybody else's writes.
    int result =
        backup == nullptr ? sqlite3_errcode(database) : sqlite3_backup_step(backup.get(), 0);
    if (result == SQLITE_OK) {
        requireDifference(path, copy, difference);
        result = sqlite3_backup_step(backup.get(), -1);
    }
    if (result != SQLITE_DONE) {
        fail(path, result);
    }
}

/// Puts a copy of `copy` in the place of the file at `path`, if there is one.
void replaceByCopy(const QString& copy, const QString& path) {
    const UnfinishedFile unfinished(path);
    QSaveFile file(unfinished.path());
    if (!file.open(QIODevice::WriteOnly)) {
        fail(file);
    }
    readBytes(copy, [&](const QByteArray& bytes) { write(file, bytes); });
    if (const QFileInfo old(path); old.exists()) {
        file.setPermissions(old.permissions());
    }
    commit(file);
    replaceDatabase(unfinished.path(), path);
}

}  // namespace

QByteArray differenceDigest(Connection& connection, const QString& base) {
    Difference difference(base);
    readWhole(connection, [&](const QByteArray& bytes) { difference.add(bytes); });
    return difference.result();
}

QByteArray noDifference() {
    return QCryptographicHash::hash({}, QCryptographicHash::Sha256);
}

void copyDatabase(Connection& connection, const QString& path,
                  const std::function<void()>& beforeItAppears) {
    QSaveFile copy(path);
    if (!copy.open(QIODevice::WriteOnly)) {
        fail(copy);
    }
    readWhole(connection, [&](const QByteArray& bytes) { write(copy, bytes); });
    beforeItAppears();
    commit(copy);
}

void copyDatabase(const QString& source, const QString& target) {
    Connection connection;
    connection.open(source);
    const bool hasMark = databaseHeader(source).has_value();
    const QString path = QFileInfo(target).absoluteFilePath();
    const UnfinishedFile unfinished(path);
    copyDatabase(connection, unfinished.path(), [] {});
    if (hasMark) {
        setNewMark(unfinished.path());
    }
    replaceDatabase(unfinished.path(), path);
}

void restoreDatabase(const QString& copy, const QString& path, const QByteArray& difference) {
    const QFileInfo link(path);
    const QString target = link.exists() ? link.canonicalFilePath() : link.absoluteFilePath();
    if (QFileInfo(target).size() > 0) {
        const auto header = databaseHeader(target);
        const auto accessHeader = header ? std::nullopt : access::headerOf(target);
        if (accessHeader) {
            return access::overwriteFile(target, *accessHeader, copy,
                                         [&] { requireDifference(target, copy, difference); });
        }
        if (!header) {
            throw Error(QStringLiteral("%1: another program has replaced the file").arg(path));
        }
        if (const auto database = openRecovered(target, *header)) {
            return overwrite(database->handle.get(), target, copy, difference);
        }
    }
    replaceByCopy(copy, target);
}

}  // namespace varo::data
