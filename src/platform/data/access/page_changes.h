#pragma once

#include "platform/data/access/bytes.h"

#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

namespace varo::access {

using PageNumber = quint32;

/// A page in memory. It stays as it is while a holder of it exists, whatever is written.
using Page = std::shared_ptr<const QByteArray>;

/// The pages that a transaction has changed, with what they were at each of its savepoints. What is
/// beyond kMemory of them is in a temporary file without a name. What needs it throws data::Error
/// when that fails.
class PageChanges {
  public:
    static constexpr qint64 kMemory = 64 << 20;

    /// `memory` is what may be in memory instead of kMemory.
    explicit PageChanges(qint64 memory = kMemory) : memory_(memory) {}
    ~PageChanges();
    Q_DISABLE_COPY_MOVE(PageChanges)

    /// `pageCount` is that of the file as it is, `pageSize` that of its pages.
    void begin(quint32 pageCount, int pageSize);

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
    PageNumber append();

    /// Numbers of the pages that have been changed or appended, ascending.
    std::vector<PageNumber> numbers() const;

    /// Savepoints as PageFile has them. Unknown ones are not touched.
    int setSavepoint();
    void undoTo(int savepoint) noexcept;
    void releaseSavepoint(int savepoint) noexcept;

  private:
    /// What a page was or is at some time: in memory, or in the temporary file.
    struct Content {
        explicit Content(PageChanges& changes) : owner(changes) {}
        ~Content() { owner.forget(*this); }
        Q_DISABLE_COPY_MOVE(Content)

        PageChanges& owner;
        std::shared_ptr<QByteArray> bytes;
        std::list<Content*>::iterator used;  ///< while it has bytes
        qint64 slot = -1;                    ///< its place in the file, -1 for none
        bool isStored = false;               ///< what is there is what it holds
    };
    using Version = std::shared_ptr<Content>;

    struct Savepoint {
        quint32 pageCount;
        /// What pages were that have been changed since; null when they had not been.
        std::unordered_map<PageNumber, Version> before;
    };

    bool isKnown(int savepoint) const noexcept {
        return savepoint >= 1 && savepoint <= static_cast<int>(savepoints_.size());
    }
    void keepBefore(PageNumber number, const Version& version);
    Version newVersion(QByteArray bytes);
    void hold(Content& content, std::shared_ptr<QByteArray> bytes);
    void load(Content& content);
    void store(Content& content);
    void forget(Content& content) noexcept;

    qint64 memory_;
    std::list<Content*> inMemory_;  ///< those used last first
    int file_ = -1;
    std::vector<qint64> unusedSlots_;
    qint64 slotCount_ = 0;
    std::unordered_map<PageNumber, Version> pages_;
    std::vector<Savepoint> savepoints_;
    quint32 pageCount_ = 0;
    int pageSize_ = 0;
};

}  // namespace varo::access
