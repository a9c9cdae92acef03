#include "platform/data/lock_check.h"

#include "platform/data/access/whole_file.h"
#include "platform/data/error.h"
#include "platform/data/sqlite_handle.h"

namespace varo::data {

bool isLocked(const QString& path) {
    try {
        const auto header = databaseHeader(path);
        if (!header) {
            const auto accessHeader = access::headerOf(path);
            return accessHeader && access::isReadingLocked(path, *accessHeader);
        }
        const DatabaseHandle handle = openHandle(path, Access::Write);
        // To open one with a write-ahead log, nobody else may use it.
        const FileLock lock(
            handle.get(), path,
            header->writesAhead ? FileLock::Kind::Alone : FileLock::Kind::WithReaders);
    } catch (const Error& error) {
        return error.isLocked();
    }
    return false;
}

}  // namespace varo::data
