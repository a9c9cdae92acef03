#pragma once

#include <QByteArray>
#include <QString>

namespace varo::access {

/// The calls that change files and that wait, for changes to be on the disk or for a lock. A test
/// may put a layer of its own in its place. Everything that fails throws data::Error; what a failed
/// call has changed is not known.
class FileLayer {
  public:
    virtual ~FileLayer() = default;

    /// A new file that can be read and written, with these permissions; its descriptor belongs to
    /// the caller. Fails when there is anything at `path`.
    virtual int create(const QString& path, unsigned permissions);

    virtual void write(int descriptor, const QByteArray& bytes, qint64 offset);
    virtual void resize(int descriptor, qint64 size);
    virtual void sync(int descriptor);
    virtual void remove(const QString& path);

    /// Waits until the creation and the removal of the file at `path` are on the disk.
    virtual void syncFolderOf(const QString& path);

    /// Lets time pass before a lock is asked for again.
    virtual void sleep(int microseconds);

    /// The layer in use: that of the system unless another one has been set.
    static FileLayer& current();

    /// Puts `layer` in its place, null the system's. The caller keeps it.
    static void setCurrent(FileLayer* layer);
};

/// `size` bytes from `offset` on, fewer at the end of the file. Throws data::Error.
QByteArray readAt(int descriptor, qint64 offset, qint64 size);

/// Throws the Error that says what the last call of the system has failed with.
[[noreturn]] void throwSystemError();

}  // namespace varo::access
