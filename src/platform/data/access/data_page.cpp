#include "platform/data/access/data_page.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr int kOwner = 4;
constexpr quint16 kDeleted = 0x8000;
constexpr quint16 kMoved = 0x4000;
constexpr quint16 kOffset = 0x1FFF;
constexpr int kMostRows = 256;  ///< a place names one with a byte

}  // namespace

int rowCount(const Layout& layout, const Bytes& page) {
    const int count = page.u16(layout.rowCount);
    if (count > std::min(kMostRows, (layout.pageSize - layout.rowOffsets) / 2)) {
        throwDamaged("a page has more rows than it can hold");
    }
    return count;
}

RowEntry rowEntry(const Layout& layout, const Bytes& page, int row) {
    const int count = rowCount(layout, page);
    if (row < 0 || row >= count) {
        throwDamaged("a row is not on its page");
    }
    const quint16 entry = page.u16(layout.rowOffsets + row * 2);
    const int begin = entry & kOffset;
    const int end =
        row == 0 ? layout.pageSize : page.u16(layout.rowOffsets + (row - 1) * 2) & kOffset;
    if (begin < layout.rowOffsets + count * 2 || begin > end || end > layout.pageSize) {
        throwDamaged("a row is outside of its page");
    }
    return {begin, end, (entry & kDeleted) != 0, (entry & kMoved) != 0};
}

Bytes rowBytes(const Layout& layout, const Bytes& page, int row) {
    const RowEntry entry = rowEntry(layout, page, row);
    return page.part(entry.begin, entry.end - entry.begin);
}

PageNumber ownerOf(const Bytes& page) {
    return page.u32(kOwner);
}

}  // namespace varo::access
