#include "platform/data/access/page_changes.h"

#include <algorithm>

namespace varo::access {

void PageChanges::begin(quint32 pageCount) {
    clear();
    pageCount_ = pageCount;
}

void PageChanges::clear() noexcept {
    pages_.clear();
    savepoints_.clear();
    pageCount_ = 0;
}

Page PageChanges::find(PageNumber number) {
    const auto found = pages_.find(number);
    return found == pages_.end() ? nullptr : Page(found->second);
}

void PageChanges::keepBefore(PageNumber number, const Version& version) {
    if (!savepoints_.empty()) {
        savepoints_.back().before.try_emplace(number, version);
    }
}

char* PageChanges::change(PageNumber number, const Page& unchanged) {
    Version& version = pages_[number];
    keepBefore(number, version);
    if (!version) {
        version = std::make_shared<QByteArray>(*unchanged);
    } else if (version.use_count() > 1) {
        version = std::make_shared<QByteArray>(*version);
    }
    return version->data();
}

PageNumber PageChanges::append(int pageSize) {
    const PageNumber number = pageCount_++;
    Version& version = pages_[number];
    keepBefore(number, version);
    version = std::make_shared<QByteArray>(pageSize, '\0');
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
