#pragma once

#include <QSaveFile>

namespace varo {

/// Puts what has been written to `file` in its place; false, with the reason in its errorString(),
/// when not all of it has reached the disk. A full disk makes flush() fail, but not commit().
inline bool commitWritten(QSaveFile& file) {
    return file.flush() && file.commit();
}

}  // namespace varo
