#pragma once

#include "platform/data/access/index_page.h"
#include "platform/data/access/table_definition.h"

#include <QByteArray>
#include <QStringList>

namespace varo::access {

/// The longest key that an index takes, in bytes; four entries fit on a page.
inline constexpr int kLongestKey = 800;

/// The tree of an index of a table, to be changed while the file is being written. Its root keeps
/// its page. Everything that fails throws data::Error; what was changed until then is to be undone
/// by the caller.
class IndexTree {
  public:
    IndexTree(PageFile& file, const TableDefinition& table, const Index& index);

    /// Whether a row has this key, another one than that at `except`.
    bool contains(const QByteArray& key, RowPlace except = {}) const;

    /// Adds an entry for the row at `place`. Throws when there is one already, or the key is longer
    /// than kLongestKey.
    void insert(const QByteArray& key, RowPlace place);

    /// Takes it away; false when there was none.
    bool remove(const QByteArray& key, RowPlace place);

  private:
    struct Change {
        bool isInserted;  ///< else removed
        QByteArray entry;
    };

    IndexPage read(PageNumber number) const;
    void write(PageNumber number, const IndexPage& page);
    PageNumber addPage();
    void releasePage(PageNumber number);

    bool apply(const Change& change);
    std::optional<bool> applyInPlace(const Change& change);
    std::vector<IndexChild> applyBelow(PageNumber number, const Change& change, int level);
    void changeNode(IndexPage& node, const Change& change, int level);
    std::vector<IndexChild> store(PageNumber number, const IndexPage& page, bool isAppended);
    void unlink(PageNumber number, const IndexPage& page);
    void joinNeighbours(IndexPage& node, std::size_t changed);
    bool join(IndexPage& node, std::size_t left);
    void storeRoot(std::vector<IndexChild> children);

    PageFile& file_;
    PageNumber owner_;
    PageNumber root_;
    RowPlace pages_;
};

/// What is wrong with the tree of an index: the order of its entries, the bounds and the chain of
/// its pages, the table to which they belong and the map of its pages. A sentence each, for whoever
/// maintains the file; empty when it is in order. Ends after kMostFindings of them.
QStringList checkIndex(PageFile& file, const TableDefinition& table, const Index& index);

/// The same with the entries compared with the rows: each row has one, whose key is that of its
/// fields where it can be computed, and none is left.
QStringList checkIndexRows(PageFile& file, const TableDefinition& table, const Index& index);

inline constexpr int kMostFindings = 20;

}  // namespace varo::access
