#pragma once

#include "platform/data/connection.h"
#include "platform/questions/questions.h"

#include <QLockFile>
#include <QString>

#include <memory>

namespace varo {

/// Name of the copy of a library that the property-conditions dialog can put back.
inline constexpr auto kBackupName = "BackupDB.def";

/// Settles what a program that was ended while its dialog was open has left in `folder`, so that
/// nothing is lost when the next backup is made: the user is asked whether the library is to be
/// taken back, if it is as the dialog last left it and differs from the backup; a backup that is
/// not taken back is kept under another name in `folder`, which the user is told; one that is the
/// library as it stands is deleted. To be called before LibraryBackup::make(). Does nothing when
/// there is no backup. Returns false when the backup is still there, because an open dialog holds
/// it, or it could neither be put back nor be renamed; make() fails then.
bool settleLeftBackup(const QString& folder, Questions& questions);

/// The first of `folder` and its numbered folders from "2" on in which a backup can be made:
/// dialogs of several programs use them at once. What is left in it, and in those that are there
/// behind it, is settled as above. The folder ends with a separator, as `folder` does, and need not
/// exist.
QString freeBackupFolder(const QString& folder, Questions& questions);

/// "BackupDB.def" in a folder, and beside it a note ("BackupDB.note") with the library's path and
/// the digest of what distinguished the library from the backup when the dialog last changed it:
/// with the backup, that tells the library as it was then from any other. From make() to the
/// destruction or discard(), a lock ("BackupDB.lock") keeps others in this program and other ones
/// from both.
class LibraryBackup {
  public:
    /// `folder` ends with a separator.
    explicit LibraryBackup(const QString& folder) : folder_(folder) {}
    /// Discards the backup, unless restore() failed.
    ~LibraryBackup();
    Q_DISABLE_COPY_MOVE(LibraryBackup)

    /// Copies the library open on `connection`, as it is at one moment and whole or not at all.
    /// Throws data::Error when that fails, an earlier backup is still there, or another dialog uses
    /// the folder.
    void make(data::Connection& connection);

    /// Notes the library as it is now, after the dialog has changed it through the connection that
    /// make() had. Returns false when that fails: if the library cannot be read or another program
    /// has changed it since make(), restore() fails; if only the note cannot be written, a backup
    /// that a killed program leaves is kept under another name instead of being taken back.
    bool noteLibrary(data::Connection& connection);

    /// Closes `connection`, the one that make() had, gives the library the content of the backup as
    /// data::restoreDatabase() does, and discards the backup. Returns false when that fails: the
    /// library is then as it was, and the backup stays to be settled the next time. It also fails
    /// when another program has changed the library since make().
    bool restore(data::Connection& connection);

    /// Where the backup is made.
    QString path() const { return folder_ + QLatin1StringView(kBackupName); }

    /// Deletes backup and note.
    void discard();

  private:
    QString folder_;
    std::unique_ptr<QLockFile> lock_;
    QString library_;
    QByteArray difference_;  ///< of the library, as it was last noted, from the backup
    qint64 version_ = 0;     ///< changed by other programs' writes only
    bool isMade_ = false;
    bool mustStay_ = false;
};

}  // namespace varo
