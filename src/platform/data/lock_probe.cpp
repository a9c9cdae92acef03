#include "platform/data/lock_probe.h"

#include "platform/data/error.h"
#include "platform/data/sqlite_handle.h"

#include <QFileInfo>

namespace varo::data {

bool isLocked(const QString& path) {
    if (!QFileInfo(path).isFile()) {
        return false;
    }
    try {
        const DatabaseHandle handle = openHandle(path, Access::Read);
        const FileLock lock(handle.get(), path, FileLock::Kind::WithReaders);
        return false;
    } catch (const Error& error) {
        return error.isLocked();
    }
}

}  // namespace varo::data
