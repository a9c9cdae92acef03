#pragma once

#include "platform/data/access/page_file.h"

#include <vector>

namespace varo::access {

/// A page below a node of an index, and the last entry that is in or below it: the key, then the
/// page and the row in four bytes. The last page of a level has no such entry, it takes all the
/// entries that are greater than the others.
struct IndexChild {
    QByteArray bound;  ///< empty on the last page of a level
    PageNumber page = 0;
};

/// A page of an index, taken apart. A node has children, a leaf entries.
struct IndexPage {
    bool isNode = false;
    PageNumber owner = 0;  ///< the definition of the table
    PageNumber previous = 0;
    PageNumber next = 0;
    std::vector<QByteArray> entries;
    std::vector<IndexChild> children;

    /// The entries as they are on the page: those of a node with the number of the child, which the
    /// child without a bound has not.
    std::vector<QByteArray> storedEntries() const;

    /// What the parent has as the bound of this page; empty when it has none.
    QByteArray bound() const;

    /// Number of the entries or children.
    std::size_t count() const { return isNode ? children.size() : entries.size(); }
};

/// Takes a page of an index apart. Throws data::Error when it is none, or damaged.
IndexPage readIndexPage(const Layout& layout, const Bytes& page);

/// Bytes that the entries of a page take, and those that there are for them.
int usedBytes(const IndexPage& page);
int roomForEntries(const Layout& layout);

/// Writes the page to `bytes`, a whole page. Throws data::Error when its entries do not fit.
void writeIndexPage(const Layout& layout, const IndexPage& page, char* bytes);

/// The key and the place of a row as an entry, and its place.
QByteArray indexEntry(const QByteArray& key, PageNumber page, int row);

}  // namespace varo::access
