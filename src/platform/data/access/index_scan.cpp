#include "platform/data/access/index_scan.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr int kMostLevels = 32;
constexpr int kPlace = 4;  ///< bytes behind a key

/// The page below `page` that holds the first entry which is not before `first`.
PageNumber childFor(const Layout& layout, const Bytes& page, const IndexEntries& children,
                    const QByteArray& first) {
    const int position = children.firstNotBefore(first);
    if (position < children.end()) {
        return children.child(position);
    }
    const PageNumber tail = page.u32(layout.indexTail);
    return tail == 0 && !children.isEmpty() ? children.child(children.last()) : tail;
}

}  // namespace

IndexScan::IndexScan(PageFile& file, PageNumber root, const QByteArray& first) : file_(file) {
    descend(root, first);
}

void IndexScan::descend(PageNumber root, const QByteArray& first) {
    PageNumber number = root;
    for (int level = 0; level < kMostLevels; ++level) {
        showPage(number);
        if (!entries_.isNode()) {
            next_ = entries_.firstNotBefore(first);
            return;
        }
        number = childFor(file_.layout(), Bytes(*page_), entries_, first);
        if (number == 0) {
            throwDamaged("a page of an index has nothing below it");
        }
    }
    throwDamaged("an index has too many levels");
}

void IndexScan::showPage(PageNumber number) {
    page_ = file_.page(number);
    entries_ = IndexEntries(file_.layout(), Bytes(*page_));
    next_ = 0;
    nextLeaf_ = Bytes(*page_).u32(file_.layout().indexNext);
}

void IndexScan::readLeaf(PageNumber number) {
    showPage(number);
    if (entries_.isNode() || ++leaves_ > file_.pageCount()) {
        throwDamaged("the leaves of an index have no end");
    }
}

bool IndexScan::next() {
    while (next_ == entries_.end()) {
        if (nextLeaf_ == 0) {
            return false;
        }
        readLeaf(nextLeaf_);
    }
    const QByteArray entry = entries_.at(next_);
    next_ = entries_.next(next_);
    const qsizetype keyLength = entry.size() - kPlace;
    key_ = entry.left(keyLength);
    place_ = {Bytes(entry).bigU24(keyLength), Bytes(entry).byte(keyLength + 3)};
    return true;
}

}  // namespace varo::access
