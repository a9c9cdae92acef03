#include "platform/data/access/whole_file.h"

#include "platform/data/access/reading.h"
#include "platform/data/file_start.h"

#include <algorithm>

namespace varo::access {

std::optional<Header> headerOf(const QString& path) {
    return readHeader(data::fileStart(path, kHeaderLength));
}

bool isReadingLocked(const QString& path, const Header& header) {
    PageFile file(path, header, data::Access::Read);
    file.setLockWait(0);
    try {
        const Reading reading(file);
    } catch (const data::Error& error) {
        if (error.isLocked()) {
            return true;
        }
        throw;
    }
    return false;
}

std::unique_ptr<PageFile> lockedFile(const QString& path, const Header& header) {
    auto file = std::make_unique<PageFile>(path, header, data::Access::Write);
    file->begin();
    return file;
}

void overwriteFile(const QString& path, const Header& header, const QString& copy,
                   const std::function<void()>& requireUnchanged) {
    const auto source = headerOf(copy);
    if (!source || source->layout().pageSize != header.layout().pageSize) {
        throw data::Error(QStringLiteral("%1 is no copy of %2").arg(copy, path));
    }
    PageFile pages(copy, *source, data::Access::Read);
    const auto file = lockedFile(path, header);
    requireUnchanged();
    const quint32 before = file->pageCount();
    if (before < pages.pageCount()) {
        throw data::Error(QStringLiteral("%1: the file has been cut short").arg(path));
    }
    for (PageNumber number = 0; number < pages.pageCount(); ++number) {
        const Page page = pages.page(number);
        if (*page != *file->page(number)) {
            std::copy(page->begin(), page->end(), file->change(number));
        }
    }
    for (PageNumber number = pages.pageCount(); number < before; ++number) {
        file->release(number);
    }
    file->commit();
}

}  // namespace varo::access
