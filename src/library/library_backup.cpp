#include "library/library_backup.h"

#include "platform/data/copy_database.h"
#include "platform/files/save_file.h"
#include "store/attempt.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <utility>

namespace varo {

namespace {

/// The library that a backup is of, and how it differed from it when the dialog last changed it.
struct Note {
    QString library;
    QByteArray difference;
};

QString backupIn(const QString& folder) {
    return folder + QLatin1StringView(kBackupName);
}

QString noteIn(const QString& folder) {
    return folder + QStringLiteral("BackupDB.note");
}

QString lockFileIn(const QString& folder) {
    return folder + QStringLiteral("BackupDB.lock");
}

/// The lock on the backup in `folder`; null when another dialog has it or it cannot be made.
std::unique_ptr<QLockFile> lockIn(const QString& folder) {
    auto lock = std::make_unique<QLockFile>(lockFileIn(folder));
    lock->setStaleLockTime(0);  // a dialog may be open for days
    return lock->tryLock(0) ? std::move(lock) : nullptr;
}

/// Whether another dialog has the lock, also while its backup is not there yet.
bool isHeld(const QString& folder) {
    return QFileInfo::exists(lockFileIn(folder)) && lockIn(folder) == nullptr;
}

bool writeNote(const QString& path, const Note& note) {
    const QJsonObject object{
        {QStringLiteral("library"), note.library},
        {QStringLiteral("difference_sha256"), QString::fromLatin1(note.difference.toHex())}};
    const QByteArray text = QJsonDocument(object).toJson();
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() &&
           commitWritten(file);
}

/// An empty note when there is none or it cannot be read.
Note readNote(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    return {object.value(u"library").toString(),
            QByteArray::fromHex(object.value(u"difference_sha256").toString().toLatin1())};
}

/// True when the library can be read and differs from the backup in `folder` as it was noted. What
/// a program that was killed has left half-written is undone first.
bool isAsNoted(const QString& folder, const Note& note) {
    bool same = false;
    return !note.library.isEmpty() && attempt([&] {
        data::Connection connection;
        connection.open(note.library);
        same = data::differenceDigest(connection, backupIn(folder)) == note.difference;
    }) && same;
}

bool removeIfAny(const QString& path) {
    return !QFileInfo::exists(path) || QFile::remove(path);
}

/// The backup first: a note alone means nothing.
bool discardIn(const QString& folder) {
    return removeIfAny(backupIn(folder)) && removeIfAny(noteIn(folder));
}

bool keepAside(const QString& folder, const QString& library, Questions& questions) {
    QString kept;
    int number = 0;
    do {
        kept = folder + QStringLiteral("BackupDB-%1.def").arg(++number);
    } while (QFileInfo::exists(kept));
    if (!QFile::rename(backupIn(folder), kept)) {
        return false;
    }
    removeIfAny(noteIn(folder));
    const QString of =
        library.isEmpty() ? QString() : QStringLiteral("数据库文件“%1”的").arg(library);
    questions.inform(
        QStringLiteral("上次编辑定位条件时留下了%1备份，已另存为：\n%2").arg(of, kept));
    return true;
}

}  // namespace

bool settleLeftBackup(const QString& folder, Questions& questions) {
    if (!QFileInfo::exists(backupIn(folder))) {
        return true;
    }
    const auto lock = lockIn(folder);
    if (lock == nullptr) {
        return false;
    }
    const Note note = readNote(noteIn(folder));
    if (!isAsNoted(folder, note)) {
        return keepAside(folder, note.library, questions);
    }
    if (note.difference == data::noDifference()) {
        return discardIn(folder);
    }
    const bool isWanted = questions.confirm(
        QStringLiteral("上次编辑定位条件时程序意外结束，数据库文件：\n%1\n只保存了一部分修改。"
                       "是否恢复编辑之前的数据？")
            .arg(note.library),
        Choice::YesNo);
    // The user may have taken long to answer.
    if (!isWanted || !isAsNoted(folder, note)) {
        return keepAside(folder, note.library, questions);
    }
    if (!attempt([&] { data::restoreDatabase(backupIn(folder), note.library, note.difference); })) {
        questions.inform(
            QStringLiteral("回滚数据库失败，无法恢复原有的数据！\n"
                           "请关闭数据库文件再试！"));
        return false;
    }
    return discardIn(folder);
}

QString freeBackupFolder(const QString& folder, Questions& questions) {
    QString free;
    QString next = folder;
    for (int number = 2; free.isEmpty() || QFileInfo::exists(next); ++number) {
        if (settleLeftBackup(next, questions) && !isHeld(next) && free.isEmpty()) {
            free = next;
        }
        next = folder + QString::number(number) + u'/';
    }
    return free;
}

LibraryBackup::~LibraryBackup() {
    if (isMade_ && !mustStay_) {
        discard();
    }
}

void LibraryBackup::make(data::Connection& connection) {
    auto lock = lockIn(folder_);
    if (lock == nullptr || QFileInfo::exists(backupIn(folder_))) {
        throw data::Error(QStringLiteral("%1 is in use").arg(backupIn(folder_)));
    }
    library_ = QFileInfo(connection.path()).absoluteFilePath();
    version_ = connection.changesOfOthers();
    difference_ = data::noDifference();
    data::copyDatabase(connection, backupIn(folder_), [&] {
        // A note without a backup means nothing, a backup without a note cannot be taken back.
        if (!writeNote(noteIn(folder_), {library_, difference_})) {
            throw data::Error(QStringLiteral("%1 cannot be written").arg(noteIn(folder_)));
        }
    });
    lock_ = std::move(lock);
    isMade_ = true;
}

bool LibraryBackup::noteLibrary(data::Connection& connection) {
    bool isOwn = false;
    return attempt([&] {
               const QByteArray difference = data::differenceDigest(connection, path());
               // Read last, so that the digest is of nothing that another program has written.
               isOwn = connection.changesOfOthers() == version_;
               if (isOwn) {
                   difference_ = difference;
               }
           }) &&
           isOwn && writeNote(noteIn(folder_), {library_, difference_});
}

bool LibraryBackup::restore(data::Connection& connection) {
    connection.close();
    const bool restored =
        isMade_ && attempt([&] { data::restoreDatabase(path(), library_, difference_); });
    mustStay_ = !restored;
    if (restored) {
        discard();
    }
    return restored;
}

void LibraryBackup::discard() {
    discardIn(folder_);
    lock_.reset();
    isMade_ = false;
}

}  // namespace varo
