#include "platform/data/access/index_page.h"

#include "platform/data/access/index_entries.h"

#include <algorithm>
#include <cstring>

namespace varo::access {

namespace {

constexpr int kFree = 2;
constexpr int kOwner = 4;
constexpr int kPlace = 4;
constexpr int kChild = 4;

/// Bytes that the entries have in common and that all but the first one leave out. They are of the
/// key only, so that each entry keeps the place of its row.
int prefixLength(const std::vector<QByteArray>& entries, int placeLength) {
    if (entries.size() < 2) {
        return 0;
    }
    qsizetype length = entries.front().size();
    for (const QByteArray& entry : entries) {
        length = std::min(length, entry.size());
    }
    const auto end = entries.front().begin() + length - placeLength;
    return static_cast<int>(
        std::mismatch(entries.front().begin(), end, entries.back().begin()).first -
        entries.front().begin());
}

int placeLength(const IndexPage& page) {
    return page.isNode ? kPlace + kChild : kPlace;
}

int usedBytes(const std::vector<QByteArray>& entries, int prefix) {
    int used = entries.empty() ? 0 : prefix;
    for (const QByteArray& entry : entries) {
        used += static_cast<int>(entry.size()) - prefix;
    }
    return used;
}

template <class Number>
void put(char* bytes, int at, Number number) {
    qToLittleEndian(number, bytes + at);
}

}  // namespace

std::vector<QByteArray> IndexPage::storedEntries() const {
    if (!isNode) {
        return entries;
    }
    std::vector<QByteArray> stored;
    for (const IndexChild& child : children) {
        if (!child.bound.isEmpty()) {
            QByteArray number(kChild, '\0');
            qToBigEndian(child.page, number.data());
            stored.push_back(child.bound + number);
        }
    }
    return stored;
}

QByteArray IndexPage::bound() const {
    if (isNode) {
        return children.empty() ? QByteArray() : children.back().bound;
    }
    return entries.empty() ? QByteArray() : entries.back();
}

IndexPage readIndexPage(const Layout& layout, const Bytes& bytes) {
    const IndexEntries entries(layout, bytes);
    IndexPage page;
    page.isNode = entries.isNode();
    page.owner = bytes.u32(kOwner);
    page.previous = bytes.u32(layout.indexPrevious);
    page.next = bytes.u32(layout.indexNext);
    for (int at = 0; at < entries.end(); at = entries.next(at)) {
        if (page.isNode) {
            page.children.push_back({entries.bound(at), entries.child(at)});
        } else {
            page.entries.push_back(entries.at(at));
        }
    }
    if (page.isNode) {
        if (const PageNumber tail = bytes.u32(layout.indexTail); tail != 0) {
            page.children.push_back({{}, tail});
        }
    }
    return page;
}

int usedBytes(const IndexPage& page) {
    const std::vector<QByteArray> stored = page.storedEntries();
    return usedBytes(stored, prefixLength(stored, placeLength(page)));
}

int roomForEntries(const Layout& layout) {
    return layout.pageSize - layout.indexEntries;
}

void writeIndexPage(const Layout& layout, const IndexPage& page, char* bytes) {
    const std::vector<QByteArray> stored = page.storedEntries();
    const auto hasNoBound = [](const IndexChild& child) { return child.bound.isEmpty(); };
    if (std::count_if(page.children.begin(), page.children.end(), hasNoBound) >
        (page.children.empty() || !hasNoBound(page.children.back()) ? 0 : 1)) {
        throwDamaged("a page of an index has no bound");
    }
    const int prefix = prefixLength(stored, placeLength(page));
    if (usedBytes(stored, prefix) > roomForEntries(layout)) {
        throw data::Error(QStringLiteral("the entries of an index do not fit on a page"));
    }
    std::memset(bytes, 0, static_cast<std::size_t>(layout.pageSize));
    bytes[0] = static_cast<char>(page.isNode ? PageKind::IndexNode : PageKind::IndexLeaf);
    bytes[1] = 1;
    put(bytes, kFree, static_cast<quint16>(roomForEntries(layout) - usedBytes(stored, prefix)));
    put(bytes, kOwner, page.owner);
    put(bytes, layout.indexPrevious, page.previous);
    put(bytes, layout.indexNext, page.next);
    const bool hasTail =
        page.isNode && !page.children.empty() && page.children.back().bound.isEmpty();
    put(bytes, layout.indexTail, hasTail ? page.children.back().page : PageNumber{0});
    put(bytes, layout.indexPrefix, static_cast<quint16>(prefix));
    int at = 0;
    for (const QByteArray& entry : stored) {
        const int left = at == 0 ? 0 : prefix;
        const auto length = static_cast<int>(entry.size()) - left;
        std::memcpy(bytes + layout.indexEntries + at, entry.constData() + left,
                    static_cast<std::size_t>(length));
        at += length;
        char& mask = bytes[layout.indexMask + at / 8];
        mask = static_cast<char>(mask | 1 << at % 8);
    }
}

QByteArray indexEntry(const QByteArray& key, PageNumber page, int row) {
    QByteArray entry = key;
    entry.append(static_cast<char>(page >> 16));
    entry.append(static_cast<char>(page >> 8));
    entry.append(static_cast<char>(page));
    entry.append(static_cast<char>(row));
    return entry;
}

}  // namespace varo::access
