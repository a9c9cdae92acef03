#include "platform/data/access/index_scan.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr int kMostLevels = 32;
constexpr int kPlace = 4;  ///< bytes behind a key

/// The page below `page` that holds the first entry which is not before `first`.
PageNumber childFor(const Layout& layout, const Bytes& page, const IndexEntries& children,
                    const QByteArray& first) {
    const std::size_t position = children.firstNotBefore(first);
    if (position < children.size()) {
        return children.child(position);
    }
    const PageNumber tail = page.u32(layout.indexTail);
    return tail == 0 && !children.isEmpty() ? children.child(children.size() - 1) : tail;
}

}  // namespace

IndexScan::IndexScan(PageFile& file, PageNumber root, const QByteArray& first) : file_(file) {
    descend(root, first);
}

void IndexScan::descend(PageNumber root, const QByteArray& first) {
    PageNumber number = root;
    for (int level = 0; level < kMostLevels; ++level) {
        const Page page = file_.page(number);
        const IndexEntries entries(file_.layout(), Bytes(*page));
        if (!entries.isNode()) {
            readLeaf(number);
            next_ = entries_.firstNotBefore(first);
            return;
        }
        number = childFor(file_.layout(), Bytes(*page), entries, first);
        if (number == 0) {
            throwDamaged("a page of an index has nothing below it");
        }
    }
    throwDamaged("an index has too many levels");
}

void IndexScan::readLeaf(PageNumber number) {
    if (++leaves_ > file_.pageCount()) {
        throwDamaged("an index has no end");
    }
    page_ = file_.page(number, PageKind::IndexLeaf);
    entries_ = IndexEntries(file_.layout(), Bytes(*page_));
    next_ = 0;
    nextLeaf_ = Bytes(*page_).u32(file_.layout().indexNext);
}

bool IndexScan::next() {
    while (next_ == entries_.size()) {
        if (nextLeaf_ == 0) {
            return false;
        }
        readLeaf(nextLeaf_);
    }
    const QByteArray entry = entries_.at(next_++);
    const qsizetype keyLength = entry.size() - kPlace;
    key_ = entry.left(keyLength);
    place_ = {Bytes(entry).bigU24(keyLength), Bytes(entry).byte(keyLength + 3)};
    return true;
}

}  // namespace varo::access
