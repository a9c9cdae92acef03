#pragma once

#include "platform/data/access.h"
#include "platform/data/access/bytes.h"
#include "platform/data/access/format.h"
#include "platform/data/access/journal.h"
#include "platform/data/access/page_changes.h"

#include <QString>

#include <functional>
#include <list>

namespace varo::access {

/// What the first byte of a page says.
enum class PageKind : quint8 {
    Header = 0,
    Data = 1,
    Table = 2,
    IndexNode = 3,
    IndexLeaf = 4,
    UsageMap = 5
};

/// The pages of an open Access file. Those that were read last are kept.
/// Everything that fails throws data::Error.
class PageFile {
  public:
    /// Opens the file at `path`, which has this header; with Access::Write for writing where the
    /// file and its format allow it.
    PageFile(const QString& path, const Header& header, data::Access access);
    ~PageFile();
    Q_DISABLE_COPY_MOVE(PageFile)

    /// How long a lock of another program is waited for, in milliseconds; two seconds at first.
    void setLockWait(int milliseconds) noexcept { lockWait_ = milliseconds; }

    /// How many bytes of pages that were read are kept.
    void setCacheLimit(qint64 bytes) noexcept { cachedBytes_ = bytes; }

    const Header& header() const noexcept { return header_; }
    const Layout& layout() const noexcept { return layout_; }

    /// With the pages that the transaction has appended.
    quint32 pageCount() const noexcept { return isWriting_ ? changes_.pageCount() : pageCount_; }

    /// The page with this number. Throws Error when the file has no such page.
    Page page(PageNumber number);

    /// The same; throws Error when it is not of this kind.
    Page page(PageNumber number, PageKind kind);

    /// `tell` is called whenever a page is asked for with page(). What it throws page() throws.
    void setPageNotice(std::function<void()> tell) { tell_ = std::move(tell); }

    /// A number for the present state of the file. It changes when beginReading() or begin() finds
    /// that another program has changed the file.
    quint64 stateNumber() const noexcept { return stateNumber_; }

    /// Keeps other programs of ours from writing until endReading(), which is to be called as
    /// often. Forgets the pages that were read before when the file has been changed since. Throws
    /// Error that isLocked() when another program is writing.
    void beginReading();
    void endReading() noexcept;

    // Writing. What is changed between begin() and commit() or undo() is seen by this PageFile at
    // once and by others after commit().

    /// Keeps other programs of ours from writing. Throws Error that isLocked() when one is
    /// writing, and Error that says why when the file can only be read.
    void begin();
    bool isWriting() const noexcept { return isWriting_; }

    /// The bytes of the page, Layout::pageSize of them, to be changed in place; valid until the
    /// next call of a function that is not const. A Page taken before stays as it was. Throws Error
    /// when the file has no such page or no transaction is open, as the two that follow.
    char* change(PageNumber number);

    /// A page of zeros: one that the file's map of free pages marks, else one behind the last.
    PageNumber add();

    /// Marks the page as free. Its content is not changed.
    void release(PageNumber number);

    /// Ends the transaction with its changes on the disk. Throws Error when that fails; the
    /// changes are then undone.
    void commit();
    void undo() noexcept;

    /// Numbers the state of the transaction, 1, 2, ..., so that what follows can be undone alone.
    int setSavepoint() { return changes_.setSavepoint(); }

    /// Undoes what came after the savepoint, which stays.
    void undoTo(int savepoint) noexcept;

    /// Forgets the savepoint and those after it; their changes stay.
    void releaseSavepoint(int savepoint) noexcept { changes_.releaseSavepoint(savepoint); }

  private:
    struct Kept {
        Page page;
        std::list<PageNumber>::iterator used;
    };

    struct State {
        qint64 size;
        qint64 modified;  ///< in nanoseconds
        qint64 changed;
        bool operator==(const State&) const = default;
    };

    State state() const;
    void setState(const State& state);
    QByteArray readPage(PageNumber number) const;
    Page unchangedPage(PageNumber number);
    void keep(PageNumber number, const Page& page);
    void forgetPages() noexcept;
    void refresh();
    void requireUnchanged() const;
    void recover();
    void readPastJournal();
    void readFormerPages();
    void releaseReadersAlone() noexcept;
    void requireWriting() const;
    void requireWritableInPlace() const;
    PageNumber append();
    void setFree(PageNumber number, bool isFree);
    void writeChanges();
    void writePages();
    void rollBack(Journal& journal) noexcept;
    void keepChanges();
    void endWriting() noexcept;

    Header header_;
    const Layout& layout_;
    QString path_;
    QString journalPath_;
    int descriptor_ = -1;
    bool isWritable_ = false;
    QString readOnlyReason_;  ///< when it is not
    QString foreignJournal_;  ///< what is wrong with the journal beside the file
    quint32 pageCount_ = 0;
    State state_{};
    quint64 stateNumber_ = 0;
    std::function<void()> tell_;
    int readers_ = 0;
    int lockWait_ = data::kLockTimeout;
    qint64 cachedBytes_ = 8 << 20;
    std::unordered_map<PageNumber, Kept> kept_;
    std::list<PageNumber> used_;            ///< the last one first
    std::unique_ptr<Journal> interrupted_;  ///< of a commit that only its former pages are read of
    bool isWriting_ = false;
    PageChanges changes_;
    PageNumber firstFree_ = 0;  ///< no page before it is free
};

}  // namespace varo::access
