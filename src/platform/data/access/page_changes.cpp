#include "platform/data/access/page_changes.h"

#include "platform/data/access/file_layer.h"

#include <QDir>
#include <QTemporaryFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace varo::access {

namespace {

/// A file in the folder for temporary files that has no name.
int openUnnamed() {
    QTemporaryFile file(QDir::tempPath() + QStringLiteral("/varo-pages.XXXXXX"));
    if (!file.open()) {
        throw data::Error(file.errorString());
    }
    const int descriptor = ::fcntl(file.handle(), F_DUPFD_CLOEXEC, 0);
    if (descriptor < 0) {
        throwSystemError();
    }
    return descriptor;
}

}  // namespace

PageChanges::~PageChanges() {
    clear();
}

void PageChanges::begin(quint32 pageCount, int pageSize) {
    clear();
    pageSize_ = pageSize;
    pageCount_ = pageCount;
}

void PageChanges::clear() noexcept {
    pages_.clear();
    savepoints_.clear();
    pageCount_ = 0;
    unusedSlots_.clear();
    slotCount_ = 0;
    if (file_ >= 0) {
        ::close(file_);
        file_ = -1;
    }
}

void PageChanges::hold(Content& content, std::shared_ptr<QByteArray> bytes) {
    inMemory_.push_front(&content);
    content.used = inMemory_.begin();
    content.bytes = std::move(bytes);
    while (static_cast<qint64>(inMemory_.size()) * pageSize_ > memory_ && inMemory_.size() > 1) {
        store(*inMemory_.back());
    }
}

PageChanges::Version PageChanges::newVersion(QByteArray bytes) {
    auto version = std::make_shared<Content>(*this);
    hold(*version, std::make_shared<QByteArray>(std::move(bytes)));
    return version;
}

void PageChanges::load(Content& content) {
    if (content.bytes) {
        inMemory_.splice(inMemory_.begin(), inMemory_, content.used);
        return;
    }
    auto bytes = std::make_shared<QByteArray>(readAt(file_, content.slot * pageSize_, pageSize_));
    if (bytes->size() != pageSize_) {
        throw data::Error(QStringLiteral("the temporary file has been cut short"));
    }
    hold(content, std::move(bytes));
}

void PageChanges::store(Content& content) {
    if (!content.isStored) {
        if (file_ < 0) {
            file_ = openUnnamed();
        }
        if (content.slot < 0 && unusedSlots_.empty()) {
            content.slot = slotCount_++;
        } else if (content.slot < 0) {
            content.slot = unusedSlots_.back();
            unusedSlots_.pop_back();
        }
        FileLayer().write(file_, *content.bytes, content.slot * pageSize_);
        content.isStored = true;
    }
    inMemory_.erase(content.used);
    content.bytes.reset();
}

void PageChanges::forget(Content& content) noexcept {
    if (content.bytes) {
        inMemory_.erase(content.used);
    }
    if (content.slot >= 0) {
        unusedSlots_.push_back(content.slot);
    }
}

Page PageChanges::find(PageNumber number) {
    const auto found = pages_.find(number);
    if (found == pages_.end()) {
        return nullptr;
    }
    load(*found->second);
    return found->second->bytes;
}

void PageChanges::keepBefore(PageNumber number, const Version& version) {
    if (!savepoints_.empty()) {
        savepoints_.back().before.try_emplace(number, version);
    }
}

char* PageChanges::change(PageNumber number, const Page& unchanged) {
    const auto found = pages_.find(number);
    if (found == pages_.end()) {
        Version version = newVersion(*unchanged);
        keepBefore(number, nullptr);
        pages_[number] = version;
        return version->bytes->data();
    }
    Version& version = found->second;
    keepBefore(number, version);
    load(*version);
    if (version.use_count() > 1) {  // a savepoint has it
        version = newVersion(*version->bytes);
    } else if (version->bytes.use_count() > 1) {  // a reader has it
        version->bytes = std::make_shared<QByteArray>(*version->bytes);
    }
    version->isStored = false;
    return version->bytes->data();
}

PageNumber PageChanges::append() {
    Version version = newVersion(QByteArray(pageSize_, '\0'));
    const PageNumber number = pageCount_++;
    keepBefore(number, nullptr);
    pages_[number] = std::move(version);
    return number;
}

std::vector<PageNumber> PageChanges::numbers() const {
    std::vector<PageNumber> numbers;
    numbers.reserve(pages_.size());
    for (const auto& [number, version] : pages_) {
        numbers.push_back(number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

int PageChanges::setSavepoint() {
    savepoints_.push_back({pageCount_, {}});
    return static_cast<int>(savepoints_.size());
}

void PageChanges::undoTo(int savepoint) noexcept {
    if (!isKnown(savepoint)) {
        return;
    }
    while (true) {
        Savepoint& last = savepoints_.back();
        for (auto& [number, version] : last.before) {
            if (version) {
                pages_[number] = std::move(version);
            } else {
                pages_.erase(number);
            }
        }
        last.before.clear();
        pageCount_ = last.pageCount;
        if (static_cast<int>(savepoints_.size()) == savepoint) {
            return;
        }
        savepoints_.pop_back();
    }
}

void PageChanges::releaseSavepoint(int savepoint) noexcept {
    if (!isKnown(savepoint)) {
        return;
    }
    while (static_cast<int>(savepoints_.size()) >= savepoint) {
        Savepoint last = std::move(savepoints_.back());
        savepoints_.pop_back();
        if (!savepoints_.empty()) {
            // What the one below knows already is older.
            savepoints_.back().before.merge(last.before);
        }
    }
}

}  // namespace varo::access
