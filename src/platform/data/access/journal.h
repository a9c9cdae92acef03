#pragma once

#include "platform/data/access/page_changes.h"

#include <QString>

#include <functional>
#include <map>
#include <memory>

namespace varo::access {

/// The journal beside an Access file: what the pages that a commit changes were before, so that a
/// commit that was interrupted can be undone. How it works and why it holds is in
/// docs/file-format.md. Everything that fails throws data::Error.
class Journal {
  public:
    /// Path of the journal of the file at `path`, in which links have been resolved.
    static QString pathOf(const QString& path);

    /// Whether there is anything at the path of a journal.
    static bool exists(const QString& journalPath);

    /// What is found at the path of a journal.
    enum class Finding {
        Incomplete,  ///< its commit has not changed the file
        Applicable,  ///< each page of the file is as before its commit, or as after it
        Unknown      ///< the file has been changed by another program since, or is another one
    };

    /// Opens the journal at this path. Throws Error, which names it, when it is none.
    explicit Journal(const QString& journalPath);
    ~Journal();
    Q_DISABLE_COPY_MOVE(Journal)

    /// The file before the commit, `before` giving its pages.
    struct Former {
        qint64 size;
        unsigned permissions;
        std::function<Page(PageNumber)> page;
    };

    /// Writes the journal for a commit of `changes` and waits until it is on the disk. Nothing is
    /// left at the path when that fails.
    static std::unique_ptr<Journal> write(const QString& journalPath, int pageSize,
                                          const Former& before, PageChanges& changes);

    /// Compares the file with the journal. To be called before those that follow.
    Finding find(int file, int pageSize);

    /// Size of the file before the commit.
    qint64 formerSize() const noexcept { return formerSize_; }

    /// The page as it was before the commit; null when the commit did not change it.
    Page formerPage(PageNumber number) const;

    /// Takes the file back to what it was before the commit, waits until that is on the disk, and
    /// removes the journal.
    void rollBack(int file);

    /// Removes the journal.
    void remove();

  private:
    struct Record {
        qint64 content;    ///< where the old content is, 0 for a page that is new
        qint64 checksums;  ///< where those of the new content are
    };

    Journal(const QString& journalPath, int descriptor);

    bool readRecords(int pageSize);
    bool isWhole(qint64 size) const;
    bool matches(PageNumber number, const Record& record, const QByteArray& found) const;

    QString path_;
    int descriptor_;
    int pageSize_ = 0;
    qint64 formerSize_ = 0;
    quint32 newPageCount_ = 0;
    std::map<PageNumber, Record> records_;
};

}  // namespace varo::access
