// What PageFile does while a transaction is open.

#include "platform/data/access/file_layer.h"
#include "platform/data/access/file_lock.h"
#include "platform/data/access/page_file.h"
#include "platform/data/access/usage_map.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <sys/stat.h>

namespace varo::access {

namespace {

/// A row is referred to with three bytes for its page, and the locks are behind the last page.
constexpr PageNumber kMostPages = 0x7FFF'F;

/// The map of the file's free pages.
constexpr RowPlace kFreePages{kMapsPage, 0};

/// The pages before it are in every file and never free: the header, the page with the map of
/// free pages, the definition of the table of all objects.
constexpr PageNumber kFirstPage = kCatalogPage + 1;

[[noreturn]] void throwReadOnly(const QString& why) {
    throw data::Error(QStringLiteral("the file can only be read: %1").arg(why));
}

}  // namespace

void PageFile::begin() {
    if (isWriting_) {
        throw data::Error(QStringLiteral("a transaction is open already"));
    }
    if (!isWritable_) {
        throwReadOnly(readOnlyReason_);
    }
    requireWritableInPlace();
    lock(descriptor_, LockByte::Writer, LockKind::Alone, lockWait_);
    try {
        if (interrupted_) {
            throw data::Error(QStringLiteral("what is being read was being written"),
                              data::Error::Cause::Locked);
        }
        recover();
        if (!foreignJournal_.isEmpty()) {
            throwReadOnly(foreignJournal_);
        }
        refresh();
        if (state_.size % layout_.pageSize != 0) {
            throwReadOnly(QStringLiteral("its last page is not whole"));
        }
    } catch (...) {
        unlock(descriptor_, LockByte::Writer);
        throw;
    }
    changes_.begin(pageCount_, layout_.pageSize);
    firstFree_ = kFirstPage;
    isWriting_ = true;
}

void PageFile::requireWritableInPlace() const {
    struct stat open {};
    struct stat named {};
    if (::fstat(descriptor_, &open) != 0) {
        throwSystemError();
    }
    if (::stat(QFile::encodeName(path_).constData(), &named) != 0 || open.st_dev != named.st_dev ||
        open.st_ino != named.st_ino) {
        throw data::Error(QStringLiteral("%1: the file has been replaced or deleted").arg(path_),
                          data::Error::Cause::Replaced);
    }
    // The journal is found by the name of the file.
    if (open.st_nlink > 1) {
        throwReadOnly(QStringLiteral("it has more than one name (hard links)"));
    }
    if (const QString lockFile = accessLockFile(path_); !lockFile.isEmpty()) {
        throwReadOnly(QStringLiteral("the Access program has it open, as %1 says; close it there, "
                                     "or delete that file if the program has ended without "
                                     "removing it")
                          .arg(lockFile));
    }
}

void PageFile::requireWriting() const {
    if (!isWriting_) {
        throw data::Error(QStringLiteral("no transaction is open"));
    }
}

char* PageFile::change(PageNumber number) {
    requireWriting();
    return changes_.change(number, page(number));
}

PageNumber PageFile::append() {
    if (changes_.pageCount() >= kMostPages) {
        throw data::Error(QStringLiteral("the file cannot grow any more"));
    }
    return changes_.append();
}

void PageFile::setFree(PageNumber number, bool isFree) {
    std::vector<PageNumber> pagesOfMap;
    access::setFree(*this, kFreePages, number, isFree, [&] {
        pagesOfMap.push_back(append());
        return pagesOfMap.back();
    });
    for (const PageNumber page : pagesOfMap) {
        setFree(page, false);
    }
}

PageNumber PageFile::add() {
    requireWriting();
    const auto found = firstMarked(*this, kFreePages, firstFree_);
    firstFree_ = found.value_or(pageCount());
    const PageNumber number = found ? *found : append();
    setFree(number, false);
    if (found) {
        std::fill_n(change(number), layout_.pageSize, '\0');
    }
    return number;
}

void PageFile::release(PageNumber number) {
    requireWriting();
    if (number < kFirstPage || number >= pageCount()) {
        throwDamaged("a page that is to be released is not one of the file");
    }
    setFree(number, true);
    firstFree_ = std::min(firstFree_, number);
}

void PageFile::undoTo(int savepoint) noexcept {
    changes_.undoTo(savepoint);
    firstFree_ = kFirstPage;
}

void PageFile::commit() {
    requireWriting();
    try {
        if (!changes_.isEmpty()) {
            writeChanges();
        }
    } catch (...) {
        undo();
        throw;
    }
    endWriting();
}

void PageFile::undo() noexcept {
    if (isWriting_) {
        endWriting();
    }
}

void PageFile::endWriting() noexcept {
    isWriting_ = false;
    changes_.clear();
    unlock(descriptor_, LockByte::Writer);
}

void PageFile::writeChanges() {
    struct stat file {};
    if (::fstat(descriptor_, &file) != 0) {
        throwSystemError();
    }
    const auto journal =
        Journal::write(journalPath_, layout_.pageSize,
                       {state_.size, file.st_mode & 0666U,
                        [this](PageNumber number) { return unchangedPage(number); }},
                       changes_);
    try {
        lock(descriptor_, LockByte::Readers, LockKind::Alone, lockWait_);
        requireUnchanged();
        requireWritableInPlace();
    } catch (...) {
        releaseReadersAlone();
        journal->remove();
        throw;
    }
    try {
        writePages();
        journal->remove();
    } catch (...) {
        rollBack(*journal);
        releaseReadersAlone();
        throw;
    }
    keepChanges();
    setState(state());
    releaseReadersAlone();
}

void PageFile::writePages() {
    FileLayer& layer = FileLayer::current();
    for (const PageNumber number : changes_.numbers()) {
        layer.write(descriptor_, *changes_.find(number), qint64{number} * layout_.pageSize);
    }
    // Programs that have the file open tell by its time that it has changed; the clock of a file
    // system may stand for some milliseconds.
    if (state().modified <= state_.modified) {
        const qint64 next = state_.modified + 1;
        const timespec times[] = {
            {0, UTIME_OMIT},
            {static_cast<time_t>(next / 1'000'000'000), static_cast<long>(next % 1'000'000'000)}};
        ::futimens(descriptor_, times);
    }
    layer.sync(descriptor_);
}

void PageFile::rollBack(Journal& journal) noexcept {
    try {
        journal.rollBack(descriptor_);
        refresh();
    } catch (const data::Error&) {
        // The journal stays, and is applied when the file is read or written the next time.
    }
}

void PageFile::keepChanges() {
    const std::vector<PageNumber> numbers = changes_.numbers();
    for (const PageNumber number : numbers) {
        if (const auto found = kept_.find(number); found != kept_.end()) {
            used_.erase(found->second.used);
            kept_.erase(found);
        }
    }
    if (static_cast<qint64>(numbers.size()) * layout_.pageSize <= cachedBytes_) {
        for (const PageNumber number : numbers) {
            keep(number, changes_.find(number));
        }
    }
}

}  // namespace varo::access
