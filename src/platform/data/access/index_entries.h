#pragma once

#include "platform/data/access/bytes.h"
#include "platform/data/access/format.h"

#include <vector>

namespace varo::access {

/// The entries of a page of an index where they are on the page: their keys, then the page and the
/// row in four bytes, and on a node the number of the page below in another four. What the others
/// have in common with the first entry is left out of them on the page.
class IndexEntries {
  public:
    IndexEntries() = default;

    /// `page` is to live as long. Throws data::Error when it is no page of an index, or damaged.
    IndexEntries(const Layout& layout, const Bytes& page);

    std::size_t size() const { return ends_.size(); }
    bool isEmpty() const { return ends_.empty(); }
    bool isNode() const { return isNode_; }

    /// An entry, whole.
    QByteArray at(std::size_t position) const;

    /// Of a node: the last entry below a child, and its page.
    QByteArray bound(std::size_t position) const;
    quint32 child(std::size_t position) const;

    /// Position of the first entry that is not before `entry`, or of the first child whose bound is
    /// not; size() when there is none.
    std::size_t firstNotBefore(const QByteArray& entry) const;

    /// Writes an entry into the page of which these are, before the one at `position`, without
    /// moving anything to another page. Returns whether that was possible: not as the first entry,
    /// on a node, where there is no room, or where it does not begin as the others do.
    bool insertInPlace(const Layout& layout, char* page, std::size_t position,
                       const QByteArray& entry) const;

    /// Takes one away in the same way: not the first one, nor the last one, which may be a bound,
    /// nor where little more than half of the page would be left.
    bool removeInPlace(const Layout& layout, char* page, std::size_t position) const;

  private:
    Bytes piece(std::size_t position) const;
    int compare(std::size_t position, const QByteArray& entry) const;
    int used() const { return isEmpty() ? 0 : ends_.back(); }

    Bytes content_;
    std::vector<quint16> ends_;
    int prefix_ = 0;
    bool isNode_ = false;
};

}  // namespace varo::access
