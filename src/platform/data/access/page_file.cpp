#include "platform/data/access/page_file.h"

#include "platform/data/sqlite_handle.h"

#include <QDeadlineTimer>
#include <QFile>

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

/// The byte of the file that those who read lock together, and who writes alone. No file is so
/// long.
constexpr off_t kLockedByte = 0x7FFF'FF00;

int openForReading(const QString& path) {
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        throwSystemError();
    }
    return descriptor;
}

bool setLock(int descriptor, short kind) noexcept {
    struct flock range {};
    range.l_type = kind;
    range.l_whence = SEEK_SET;
    range.l_start = kLockedByte;
    range.l_len = 1;
    return ::fcntl(descriptor, F_OFD_SETLK, &range) == 0;
}

/// Waits for a program that has the file locked, kLockTimeout at most.
void lock(int descriptor, short kind) {
    const QDeadlineTimer deadline(data::kLockTimeout);
    while (!setLock(descriptor, kind)) {
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

void unlock(int descriptor) noexcept {
    setLock(descriptor, F_UNLCK);
}

}  // namespace

PageFile::PageFile(const QString& path, const Header& header)
    : header_(header), layout_(header_.layout()), descriptor_(openForReading(path)) {
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
        lock(descriptor_, F_RDLCK);
        try {
            if (const State found = state(); found != state_) {
                kept_.clear();
                used_.clear();
                setState(found);
            }
        } catch (...) {
            unlock(descriptor_);
            throw;
        }
    }
    ++readers_;
}

void PageFile::endReading() noexcept {
    if (--readers_ == 0) {
        unlock(descriptor_);
    }
}

Page PageFile::page(PageNumber number) {
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

}  // namespace varo::access
