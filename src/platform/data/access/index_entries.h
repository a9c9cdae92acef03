#pragma once

#include "platform/data/access/bytes.h"
#include "platform/data/access/format.h"

namespace varo::access {

/// The entries of a page of an index where they are on the page: their keys, then the page and the
/// row in four bytes, and on a node the number of the page below in another four. What the others
/// have in common with the first entry is left out of them on the page. An entry is named by its
/// position, which is where its bytes begin; those behind it are greater.
class IndexEntries {
  public:
    IndexEntries() = default;

    /// `page` is to live as long. Throws data::Error when it is no page of an index; damage of an
    /// entry is found, and thrown, when the entry is looked at.
    IndexEntries(const Layout& layout, const Bytes& page);

    bool isEmpty() const { return end_ == 0; }
    bool isNode() const { return isNode_; }

    /// The position behind the last entry, where the first one is at 0.
    int end() const { return end_; }

    /// The last entry, unless there is none, and the one behind the entry at `position`.
    int last() const { return beginAt(end_ - 1); }
    int next(int position) const;

    /// An entry, whole.
    QByteArray at(int position) const;

    /// Of a node: the last entry below a child, and its page.
    QByteArray bound(int position) const;
    quint32 child(int position) const;

    /// Position of the first entry that is not before `entry`, or of the first child whose bound is
    /// not; end() when there is none.
    int firstNotBefore(const QByteArray& entry) const;

    /// Writes an entry into the page of which these are, before the one at `position`, without
    /// moving anything to another page. Returns whether that was possible: not as the first entry,
    /// on a node, where there is no room, or where it does not begin as the others do. These are
    /// not the page's any more.
    bool insertInPlace(const Layout& layout, char* page, int position,
                       const QByteArray& entry) const;

    /// Takes one away in the same way: not the first one, nor the last one, which may be a bound,
    /// nor where little more than half of the page would be left.
    bool removeInPlace(const Layout& layout, char* page, int position) const;

  private:
    int beginAt(int offset) const;
    Bytes piece(int position) const;
    int compare(int position, const QByteArray& entry) const;

    Bytes mask_;  ///< a bit for each byte that an entry begins with, but the first one, or ends at
    Bytes content_;
    int end_ = 0;
    int prefix_ = 0;
    bool isNode_ = false;
};

}  // namespace varo::access
