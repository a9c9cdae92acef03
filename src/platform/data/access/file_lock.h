#pragma once

#include <QString>

namespace varo::access {

// The locks by which programs of ours take turns with an Access file. They are on bytes behind the
// end of any file and belong to the open file that `descriptor` stands for: another one of the same
// process is kept out as well.

enum class LockByte {
    Readers,  ///< locked together while pages are read, alone while they are written
    Writer    ///< locked alone by the one that has begun to write
};

enum class LockKind { Shared, Alone };

/// Waits so many milliseconds at most for other programs; throws data::Error that isLocked() then.
/// A lock that is held already becomes one of this kind.
void lock(int descriptor, LockByte byte, LockKind kind, int wait);
void unlock(int descriptor, LockByte byte) noexcept;

/// Whether a program holds a lock that keeps this one from locking the byte alone. Throws
/// data::Error when that cannot be told.
bool isLockedByOther(int descriptor, LockByte byte);

/// Path of the file that the Access program keeps beside the database at `path` while it has it
/// open; "" when there is none.
QString accessLockFile(const QString& path);

}  // namespace varo::access
