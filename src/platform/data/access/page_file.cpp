#include "platform/data/access/page_file.h"

#include "platform/data/access/file_layer.h"
#include "platform/data/access/file_lock.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varo::access {

namespace {

constexpr qint64 kMostPages = 0x1000000;  ///< a row is referred to with three bytes for its page

int openFile(const QString& path, int access) {
    return ::open(QFile::encodeName(path).constData(), access | O_CLOEXEC | O_NONBLOCK);
}

QString finalPath(const QString& path) {
    const QFileInfo file(path);
    return file.exists() ? file.canonicalFilePath() : file.absoluteFilePath();
}

}  // namespace

PageFile::PageFile(const QString& path, const Header& header, data::Access access)
    : header_(header),
      layout_(header_.layout()),
      path_(finalPath(path)),
      journalPath_(Journal::pathOf(path_)) {
    if (access != data::Access::Write) {
        readOnlyReason_ = QStringLiteral("the file has been opened for reading only");
    } else if (header_.isJet3()) {
        readOnlyReason_ = QStringLiteral("files of Access 97 can only be read");
    } else if (::access(QFile::encodeName(QFileInfo(path_).absolutePath()).constData(), W_OK) !=
               0) {
        readOnlyReason_ = QStringLiteral("nothing can be written into the folder of the file");
    } else {
        descriptor_ = openFile(path_, O_RDWR);
        if (descriptor_ < 0) {
            readOnlyReason_ =
                QStringLiteral("the file cannot be written: %1").arg(qt_error_string(errno));
        }
    }
    isWritable_ = descriptor_ >= 0;
    if (!isWritable_) {
        descriptor_ = openFile(path_, O_RDONLY);
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
    undo();
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

void PageFile::forgetPages() noexcept {
    kept_.clear();
    used_.clear();
}

void PageFile::refresh() {
    if (const State found = state(); found != state_) {
        forgetPages();
        setState(found);
        ++stateNumber_;
    }
}

void PageFile::requireUnchanged() const {
    if (state() != state_) {
        throw data::Error(
            QStringLiteral("another program has changed the file while it was in use"));
    }
}

void PageFile::recover() {
    if (!Journal::exists(journalPath_)) {
        foreignJournal_.clear();
        return;
    }
    lock(descriptor_, LockByte::Readers, LockKind::Alone, lockWait_);
    try {
        Journal journal(journalPath_);
        switch (journal.find(descriptor_, layout_.pageSize)) {
            case Journal::Finding::Incomplete:
                journal.remove();
                foreignJournal_.clear();
                break;
            case Journal::Finding::Applicable:
                journal.rollBack(descriptor_);
                foreignJournal_.clear();
                break;
            case Journal::Finding::Unknown:
                foreignJournal_ =
                    QStringLiteral(
                        "%1: a program was interrupted while it wrote to the file, and "
                        "another one has changed the file since; keep a copy of both, "
                        "then move the journal away to write to the file as it is")
                        .arg(journalPath_);
                break;
        }
    } catch (...) {
        releaseReadersAlone();
        throw;
    }
    releaseReadersAlone();
}

void PageFile::releaseReadersAlone() noexcept {
    if (readers_ == 0) {
        unlock(descriptor_, LockByte::Readers);
        return;
    }
    try {
        lock(descriptor_, LockByte::Readers, LockKind::Shared, lockWait_);
    } catch (const data::Error&) {
        // The lock that is held keeps more programs out than needed, until reading ends.
    }
}

/// Reads what the journal has of a commit that was interrupted, or that has not changed a page yet:
/// nobody changes one while the readers' lock is held.
void PageFile::readFormerPages() {
    std::unique_ptr<Journal> journal;
    try {
        journal = std::make_unique<Journal>(journalPath_);
    } catch (const data::Error&) {
        if (Journal::exists(journalPath_)) {
            throw;
        }
        return;  // it has been removed meanwhile
    }
    if (journal->find(descriptor_, layout_.pageSize) == Journal::Finding::Applicable) {
        forgetPages();
        setState(state());
        ++stateNumber_;
        interrupted_ = std::move(journal);
        pageCount_ = static_cast<quint32>(interrupted_->formerSize() / layout_.pageSize);
    }
}

void PageFile::readPastJournal() {
    if (!isWritable_ || isLockedByOther(descriptor_, LockByte::Writer)) {
        readFormerPages();
        return;
    }
    unlock(descriptor_, LockByte::Readers);
    lock(descriptor_, LockByte::Writer, LockKind::Alone, lockWait_);
    try {
        recover();
    } catch (...) {
        unlock(descriptor_, LockByte::Writer);
        throw;
    }
    unlock(descriptor_, LockByte::Writer);
    lock(descriptor_, LockByte::Readers, LockKind::Shared, lockWait_);
    if (foreignJournal_.isEmpty() && Journal::exists(journalPath_)) {
        readFormerPages();  // another program has written meanwhile
    }
}

void PageFile::beginReading() {
    if (readers_ == 0) {
        lock(descriptor_, LockByte::Readers, LockKind::Shared, lockWait_);
        try {
            if (!isWriting_) {
                if (Journal::exists(journalPath_)) {
                    readPastJournal();
                }
                if (!interrupted_) {
                    refresh();
                }
            }
        } catch (...) {
            unlock(descriptor_, LockByte::Readers);
            throw;
        }
    }
    ++readers_;
}

void PageFile::endReading() noexcept {
    if (--readers_ == 0) {
        if (interrupted_) {
            interrupted_.reset();
            forgetPages();
            state_ = {};  // what is read next is not known
        }
        unlock(descriptor_, LockByte::Readers);
    }
}

Page PageFile::page(PageNumber number) {
    if (tell_) {
        tell_();
    }
    if (isWriting_) {
        if (Page changed = changes_.find(number)) {
            return changed;
        }
    }
    return unchangedPage(number);
}

Page PageFile::unchangedPage(PageNumber number) {
    if (const auto found = kept_.find(number); found != kept_.end()) {
        used_.splice(used_.begin(), used_, found->second.used);
        return found->second.page;
    }
    Page page = interrupted_ ? interrupted_->formerPage(number) : nullptr;
    if (!page) {
        page = std::make_shared<const QByteArray>(readPage(number));
    }
    keep(number, page);
    return page;
}

void PageFile::keep(PageNumber number, const Page& page) {
    while (!used_.empty() &&
           static_cast<qint64>(kept_.size() + 1) * layout_.pageSize > cachedBytes_) {
        kept_.erase(used_.back());
        used_.pop_back();
    }
    used_.push_front(number);
    kept_.emplace(number, Kept{page, used_.begin()});
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
    const QByteArray bytes =
        readAt(descriptor_, qint64{number} * layout_.pageSize, layout_.pageSize);
    if (bytes.size() != layout_.pageSize) {
        throwDamaged("the file has been cut short");
    }
    if (readers_ > 0 || isWriting_) {
        requireUnchanged();
    }
    return bytes;
}

}  // namespace varo::access
