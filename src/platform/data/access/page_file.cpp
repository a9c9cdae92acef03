#include "platform/data/access/page_file.h"

#include "platform/data/access/usage_map.h"
#include "platform/data/sqlite_handle.h"

#include <QDeadlineTimer>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varo::access {

namespace {

constexpr int kBetweenTries = 10'000;  ///< microseconds

[[noreturn]] void throwSystemError() {
    throw data::Error(QString::fromLocal8Bit(strerror(errno)));
}

constexpr qint64 kMostPages = 0x1000000;  ///< a row is referred to with three bytes for its page

/// The map of the file's free pages.
constexpr RowPlace kFreePages{1, 0};

/// The pages before it are in every file and never free: the header, the page with the map of
/// free pages, the definition of the table of all objects.
constexpr PageNumber kFirstPage = 3;

/// The byte of the file that programs lock together while they read, and that one locks alone
/// while it writes pages. No file is so long.
constexpr off_t kReadersByte = 0x7FFF'FF00;

/// The byte that the program that has begun to write locks alone.
constexpr off_t kWriterByte = kReadersByte + 1;

int openFile(const QString& path, int access) {
    return ::open(QFile::encodeName(path).constData(), access | O_CLOEXEC | O_NONBLOCK);
}

bool setLock(int descriptor, off_t byte, short kind) noexcept {
    struct flock range {};
    range.l_type = kind;
    range.l_whence = SEEK_SET;
    range.l_start = byte;
    range.l_len = 1;
    return ::fcntl(descriptor, F_OFD_SETLK, &range) == 0;
}

/// Waits for a program that has the file locked, kLockTimeout at most.
void lock(int descriptor, off_t byte, short kind) {
    const QDeadlineTimer deadline(data::kLockTimeout);
    while (!setLock(descriptor, byte, kind)) {
        if (errno != EAGAIN && errno != EACCES && errno != EINTR) {
            throwSystemError();
        }
        if (deadline.hasExpired()) {
            throw data::Error(QStringLiteral("another program is writing to the file"),
                              data::Error::Cause::Locked);
        }
        ::usleep(kBetweenTries);
    }
}

void unlock(int descriptor, off_t byte) noexcept {
    setLock(descriptor, byte, F_UNLCK);
}

}  // namespace

PageFile::PageFile(const QString& path, const Header& header, data::Access access)
    : header_(header),
      layout_(header_.layout()),
      descriptor_(access == data::Access::Write && !header.isJet3() ? openFile(path, O_RDWR) : -1),
      isWritable_(descriptor_ >= 0) {
    if (!isWritable_) {
        descriptor_ = openFile(path, O_RDONLY);
    }
    if (descriptor_ < 0) {
        throwSystemError();
    }
    try {
        setState(state());
    } catch (...) {
        ::close(descriptor_);
        throw;
    }
}

PageFile::~PageFile() {
    ::close(descriptor_);
}

PageFile::State PageFile::state() const {
    struct stat found {};
    if (::fstat(descriptor_, &found) != 0) {
        throwSystemError();
    }
    const auto nanoseconds = [](const timespec& time) {
        return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
    };
    return {found.st_size, nanoseconds(found.st_mtim), nanoseconds(found.st_ctim)};
}

void PageFile::setState(const State& state) {
    state_ = state;
    // A last page that is not whole is none.
    pageCount_ = static_cast<quint32>(std::min<qint64>(state.size / layout_.pageSize, kMostPages));
}

void PageFile::beginReading() {
    if (readers_ == 0) {
        lock(descriptor_, kReadersByte, F_RDLCK);
        try {
            if (const State found = state(); found != state_) {
                forgetPages();
                setState(found);
            }
        } catch (...) {
            unlock(descriptor_, kReadersByte);
            throw;
        }
    }
    ++readers_;
}

void PageFile::endReading() noexcept {
    if (--readers_ == 0) {
        unlock(descriptor_, kReadersByte);
    }
}

void PageFile::forgetPages() noexcept {
    kept_.clear();
    used_.clear();
}

Page PageFile::page(PageNumber number) {
    if (isWriting_) {
        if (Page changed = changes_.find(number)) {
            return changed;
        }
    }
    if (const auto found = kept_.find(number); found != kept_.end()) {
        used_.splice(used_.begin(), used_, found->second.used);
        return found->second.page;
    }
    const auto page = std::make_shared<const QByteArray>(readPage(number));
    if (static_cast<qint64>(kept_.size()) * layout_.pageSize >= kCachedBytes) {
        kept_.erase(used_.back());
        used_.pop_back();
    }
    used_.push_front(number);
    kept_.emplace(number, Kept{page, used_.begin()});
    return page;
}

Page PageFile::page(PageNumber number, PageKind kind) {
    Page found = page(number);
    if (static_cast<PageKind>(found->front()) != kind) {
        throwDamaged("a page is of another kind than it must be");
    }
    return found;
}

QByteArray PageFile::readPage(PageNumber number) const {
    if (number >= pageCount_) {
        throwDamaged("a page is behind the end of the file");
    }
    QByteArray bytes(layout_.pageSize, Qt::Uninitialized);
    qint64 count = 0;
    while (count < bytes.size()) {
        const ssize_t piece = ::pread(descriptor_, bytes.data() + count,
                                      static_cast<std::size_t>(bytes.size() - count),
                                      qint64{number} * layout_.pageSize + count);
        if (piece == 0) {
            throwDamaged("the file has been cut short");
        }
        if (piece < 0 && errno != EINTR) {
            throwSystemError();
        }
        count += std::max<ssize_t>(piece, 0);
    }
    return bytes;
}

void PageFile::begin() {
    if (isWriting_) {
        throw data::Error(QStringLiteral("a transaction is open already"));
    }
    if (!isWritable_) {
        throw data::Error(header_.isJet3() ? QStringLiteral("files of Access 97 can only be read")
                                           : QStringLiteral("the file cannot be written"));
    }
    lock(descriptor_, kWriterByte, F_WRLCK);
    try {
        if (const State found = state(); found != state_) {
            forgetPages();
            setState(found);
        }
    } catch (...) {
        unlock(descriptor_, kWriterByte);
        throw;
    }
    changes_.begin(pageCount_);
    firstFree_ = kFirstPage;
    isWriting_ = true;
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
    return changes_.append(layout_.pageSize);
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
        writeChanges();
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
    unlock(descriptor_, kWriterByte);
}

void PageFile::writeChanges() {
    for (const PageNumber number : changes_.numbers()) {
        const Page page = changes_.find(number);
        if (::pwrite(descriptor_, page->constData(), static_cast<std::size_t>(page->size()),
                     qint64{number} * layout_.pageSize) != page->size()) {
            throwSystemError();
        }
    }
    forgetPages();
    setState(state());
}

}  // namespace varo::access
