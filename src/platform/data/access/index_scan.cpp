#include "platform/data/access/index_scan.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr int kMostLevels = 32;
constexpr int kPlace = 4;  ///< bytes behind a key
constexpr int kChild = 4;  ///< bytes behind the place, on a node

PageKind kindOf(const Bytes& page) {
    const auto kind = static_cast<PageKind>(page.byte(0));
    if (kind != PageKind::IndexNode && kind != PageKind::IndexLeaf) {
        throwDamaged("a page of an index is none");
    }
    return kind;
}

/// The page below `page` that holds the first entry which is not before `first`.
PageNumber childFor(const Layout& layout, const Bytes& page, const QByteArray& first) {
    const std::vector<QByteArray> entries = indexEntries(layout, page);
    for (const QByteArray& entry : entries) {
        if (entry.left(entry.size() - kChild) >= first) {
            return Bytes(entry).bigU32(entry.size() - kChild);
        }
    }
    const PageNumber tail = page.u32(layout.indexTail);
    if (tail == 0 && !entries.empty()) {
        return Bytes(entries.back()).bigU32(entries.back().size() - kChild);
    }
    return tail;
}

}  // namespace

std::vector<QByteArray> indexEntries(const Layout& layout, const Bytes& page) {
    const int least = kindOf(page) == PageKind::IndexNode ? kPlace + kChild : kPlace;
    const int prefixLength =
        layout.hasWideNumbers ? page.u16(layout.indexPrefix) : page.byte(layout.indexPrefix);
    const Bytes content = page.from(layout.indexEntries);
    std::vector<QByteArray> entries;
    QByteArray prefix;
    qsizetype begin = 0;
    for (int i = layout.indexMask; i < layout.indexEntries; ++i) {
        const quint8 byte = page.byte(i);
        for (int bit = 0; byte != 0 && bit < 8; ++bit) {
            if ((byte >> bit & 1) == 0) {
                continue;
            }
            const qsizetype end = qsizetype{i - layout.indexMask} * 8 + bit;
            const Bytes piece = content.part(begin, end - begin);
            QByteArray entry = prefix;
            entry.append(piece.data(), piece.size());
            if (entry.size() < least) {
                throwDamaged("an entry of an index is too short");
            }
            if (entries.empty()) {
                prefix = entry.left(prefixLength);
            }
            entries.push_back(std::move(entry));
            begin = end;
        }
    }
    return entries;
}

IndexScan::IndexScan(PageFile& file, PageNumber root, const QByteArray& first) : file_(file) {
    descend(root, first);
}

void IndexScan::descend(PageNumber root, const QByteArray& first) {
    PageNumber number = root;
    for (int level = 0; level < kMostLevels; ++level) {
        const Page page = file_.page(number);
        if (kindOf(Bytes(*page)) == PageKind::IndexLeaf) {
            readLeaf(number);
            next_ = static_cast<std::size_t>(
                std::find_if(entries_.begin(), entries_.end(),
                             [&](const QByteArray& entry) { return entry >= first; }) -
                entries_.begin());
            return;
        }
        number = childFor(file_.layout(), Bytes(*page), first);
        if (number == 0) {
            throwDamaged("a page of an index has nothing below it");
        }
    }
    throwDamaged("an index has too many levels");
}

void IndexScan::readLeaf(PageNumber number) {
    const Page page = file_.page(number, PageKind::IndexLeaf);
    if (++leaves_ > file_.pageCount()) {
        throwDamaged("an index has no end");
    }
    entries_ = indexEntries(file_.layout(), Bytes(*page));
    next_ = 0;
    nextLeaf_ = Bytes(*page).u32(file_.layout().indexNext);
}

bool IndexScan::next() {
    while (next_ == entries_.size()) {
        if (nextLeaf_ == 0) {
            return false;
        }
        readLeaf(nextLeaf_);
    }
    const QByteArray& entry = entries_[next_++];
    const qsizetype keyLength = entry.size() - kPlace;
    key_ = entry.left(keyLength);
    place_ = {Bytes(entry).bigU24(keyLength), Bytes(entry).byte(keyLength + 3)};
    return true;
}

}  // namespace varo::access
