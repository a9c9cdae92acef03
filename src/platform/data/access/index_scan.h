#pragma once

#include "platform/data/access/index_entries.h"
#include "platform/data/access/table_definition.h"

#include <QByteArray>

#include <optional>

namespace varo::access {

/// Goes through the entries of an index in their order, which is that of their keys and of
/// rowNumber() where these are the same. What is written meanwhile it may see or not; it ends in
/// any case.
class IndexScan {
  public:
    /// Begins with the first entry that is not before `first`; an entry whose beginning equals
    /// `first` is not before it.
    IndexScan(PageFile& file, PageNumber root, const QByteArray& first);

    /// Goes to the next entry, the first one at first; false at the end. Throws data::Error when
    /// the index is damaged.
    bool next();

    /// The key of the entry and the row that has it.
    const QByteArray& key() const { return key_; }
    RowPlace place() const { return place_; }

  private:
    void descend(PageNumber root, const QByteArray& first);
    void showPage(PageNumber number);
    void readLeaf(PageNumber number);

    PageFile& file_;
    Page page_;
    IndexEntries entries_;  ///< of the page
    int next_ = 0;          ///< its position
    PageNumber nextLeaf_ = 0;
    quint32 leaves_ = 0;
    QByteArray key_;
    RowPlace place_;
};

}  // namespace varo::access
