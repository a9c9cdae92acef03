#include "platform/data/access/access_driver.h"

#include "platform/data/access/access_file.h"
#include "platform/data/file_start.h"

namespace varo::access {

using data::Error;

std::unique_ptr<data::DatabaseFile> AccessDriver::open(const QString& path,
                                                       data::Access access) const {
    const auto header = readHeader(data::fileStart(path, kHeaderLength));
    if (!header) {
        return nullptr;
    }
    if (header->isEncoded || header->hasPassword) {
        throw Error(
            QStringLiteral("%1: the Access file is %2")
                .arg(path, header->isEncoded
                               ? QStringLiteral("encoded or encrypted, which cannot be read")
                               : QStringLiteral("protected with a password")));
    }
    return std::make_unique<AccessFile>(path, *header, access);
}

}  // namespace varo::access
