#pragma once

#include "platform/data/access/bytes.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace varo::access {

using PageNumber = quint32;

/// A page in memory. It stays as it is while a holder of it exists, whatever is written.
using Page = std::shared_ptr<const QByteArray>;

/// The pages that a transaction has changed, with what they were at each of its savepoints.
class PageChanges {
  public:
    /// `pageCount` is that of the file as it is.
    void begin(quint32 pageCount);

    /// Forgets everything.
    void clear() noexcept;

    quint32 pageCount() const noexcept { return pageCount_; }
    bool isEmpty() const noexcept { return pages_.empty(); }

    /// The page as it has been changed; null when it has not.
    Page find(PageNumber number);

    /// The bytes of the page, to be changed in place; `unchanged` is what it was unless find()
    /// knows it. Valid until the next call.
    char* change(PageNumber number, const Page& unchanged);

    /// A further page, of zeros, behind the last one.
    PageNumber append(int pageSize);

    /// Numbers of the pages that have been changed or appended, ascending.
    std::vector<PageNumber> numbers() const;

    /// Savepoints as PageFile has them. Unknown ones are not touched.
    int setSavepoint();
    void undoTo(int savepoint) noexcept;
    void releaseSavepoint(int savepoint) noexcept;

  private:
    using Version = std::shared_ptr<QByteArray>;

    struct Savepoint {
        quint32 pageCount;
        /// What pages were that have been changed since; null when they had not been.
        std::unordered_map<PageNumber, Version> before;
    };

    bool isKnown(int savepoint) const noexcept {
        return savepoint >= 1 && savepoint <= static_cast<int>(savepoints_.size());
    }
    void keepBefore(PageNumber number, const Version& version);

    std::unordered_map<PageNumber, Version> pages_;
    std::vector<Savepoint> savepoints_;
    quint32 pageCount_ = 0;
};

}  // namespace varo::access
