#pragma once

#include <QFile>
#include <QString>

#include <sys/mount.h>
#include <unistd.h>

namespace varo::test {

/// Mounts a folder for reading only, which binds every user; where that is not allowed, takes the
/// permissions of the folder and of its file away, which does not bind the super-user. The file can
/// be left writable.
class ReadOnlyFolder {
  public:
    enum class File { ReadOnly, Writable };

    ReadOnlyFolder(const QString& folder, const QString& file, File kind = File::ReadOnly)
        : folder_(folder), file_(file), path_(QFile::encodeName(folder)), kind_(kind) {
        mounted_ = mount(path_, path_, nullptr, MS_BIND, nullptr) == 0;
        readOnly_ = mounted_ ? mount(nullptr, path_, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY,
                                     nullptr) == 0
                             : geteuid() != 0 && permit(QFile::ReadOwner | QFile::ExeOwner);
        if (mounted_ && kind_ == File::Writable) {
            const QByteArray name = QFile::encodeName(file_);
            readOnly_ = readOnly_ && mount(name, name, nullptr, MS_BIND, nullptr) == 0 &&
                        mount(nullptr, name, nullptr, MS_REMOUNT | MS_BIND, nullptr) == 0;
        }
    }
    Q_DISABLE_COPY_MOVE(ReadOnlyFolder)
    ~ReadOnlyFolder() {
        mounted_ ? umount2(path_, MNT_DETACH) == 0
                 : permit(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    bool readOnly() const { return readOnly_; }

  private:
    bool permit(QFile::Permissions permissions) const {
        return QFile::setPermissions(folder_, permissions) &&
               (kind_ == File::Writable || QFile::setPermissions(file_, permissions));
    }

    QString folder_;
    QString file_;
    QByteArray path_;
    File kind_;
    bool mounted_ = false;
    bool readOnly_ = false;
};

}  // namespace varo::test
