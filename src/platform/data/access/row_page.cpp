#include "platform/data/access/row_page.h"

#include <algorithm>
#include <cstring>

namespace varo::access {

namespace {

constexpr int kKnown = 1;  ///< a byte that is 1 on every page
constexpr int kFreeBytes = 2;
constexpr int kOwner = 4;
constexpr quint16 kOffset = 0x1FFF;
constexpr int kEntry = 2;

void setU16(char* at, int value) {
    qToLittleEndian(static_cast<quint16>(value), at);
}

}  // namespace

RowPage::RowPage(const Layout& layout, char* page)
    : layout_(layout), page_(page), rows_(access::rowCount(layout, bytes())) {
    for (int row = 0; row < rows_; ++row) {
        const RowEntry entry = rowEntry(layout_, bytes(), row);
        if (isRemoved(row)) {
            removedBytes_ += entry.end - entry.begin;
        }
    }
}

void RowPage::clear(const Layout& layout, char* page, PageNumber owner) {
    std::memset(page, 0, static_cast<std::size_t>(layout.pageSize));
    page[0] = static_cast<char>(PageKind::Data);
    page[kKnown] = 1;
    qToLittleEndian(owner, page + kOwner);
    setU16(page + kFreeBytes, layout.pageSize - layout.rowOffsets);
}

Bytes RowPage::bytes() const {
    return {page_, layout_.pageSize};
}

quint16 RowPage::directory(int row) const {
    return qFromLittleEndian<quint16>(page_ + layout_.rowOffsets + row * kEntry);
}

void RowPage::setDirectory(int row, int offset, Kind kind) {
    setU16(page_ + layout_.rowOffsets + row * kEntry, offset | static_cast<int>(kind));
}

bool RowPage::isRemoved(int row) const {
    constexpr auto kRemoved = static_cast<quint16>(Kind::Removed);
    return (directory(row) & kRemoved) == kRemoved;
}

int RowPage::begin(int row) const {
    return directory(row) & kOffset;
}

int RowPage::end(int row) const {
    return row == 0 ? layout_.pageSize : begin(row - 1);
}

int RowPage::firstRemoved() const {
    int row = 0;
    while (row < rows_ && !isRemoved(row)) {
        ++row;
    }
    return row;
}

void RowPage::requireRow(int row) const {
    if (row < 0 || row >= rows_ || isRemoved(row)) {
        throwDamaged("a row is not on its page");
    }
}

bool RowPage::isEmpty() const {
    for (int row = 0; row < rows_; ++row) {
        if (!isRemoved(row)) {
            return false;
        }
    }
    return true;
}

int RowPage::roomForNew() const {
    const int free = end(rows_) - layout_.rowOffsets - rows_ * kEntry + removedBytes_;
    if (rows_ < kMostRowsOnPage) {
        return std::max(free - kEntry, -1);
    }
    return firstRemoved() < rows_ ? free : -1;
}

int RowPage::roomFor(int row) const {
    const int free = end(rows_) - layout_.rowOffsets - rows_ * kEntry + removedBytes_;
    return free + end(row) - begin(row);
}

void RowPage::setRowCount(int count) {
    rows_ = count;
    setU16(page_ + layout_.rowCount, count);
}

/// Gives a row another length and kind: the rows behind it, which are before it in the page, move.
void RowPage::resize(int row, int size, Kind kind) {
    const int from = begin(row);
    const int lowest = end(rows_);
    const int growth = size - (end(row) - from);
    std::memmove(page_ + lowest - growth, page_ + lowest, static_cast<std::size_t>(from - lowest));
    for (int other = row + 1; other < rows_; ++other) {
        setU16(page_ + layout_.rowOffsets + other * kEntry, directory(other) - growth);
    }
    setDirectory(row, from - growth, kind);
    setU16(page_ + kFreeBytes, end(rows_) - layout_.rowOffsets - rows_ * kEntry);
}

void RowPage::giveBackRemoved() {
    for (int row = 0; removedBytes_ > 0 && row < rows_; ++row) {
        if (isRemoved(row)) {
            removedBytes_ -= end(row) - begin(row);
            resize(row, 0, Kind::Removed);
        }
    }
}

int RowPage::add(const Bytes& content, Kind kind) {
    giveBackRemoved();
    int row = rows_;
    if (rows_ < kMostRowsOnPage) {
        const int lowest = end(rows_);
        setRowCount(rows_ + 1);
        setDirectory(row, lowest, Kind::Removed);
    } else {
        row = firstRemoved();
    }
    replace(row, content, kind);
    return row;
}

void RowPage::replace(int row, const Bytes& content, Kind kind) {
    giveBackRemoved();
    resize(row, static_cast<int>(content.size()), kind);
    if (!content.isEmpty()) {
        std::memcpy(page_ + begin(row), content.data(), static_cast<std::size_t>(content.size()));
    }
}

void RowPage::remove(int row) {
    giveBackRemoved();
    resize(row, 0, Kind::Removed);
    while (rows_ > 0 && isRemoved(rows_ - 1)) {
        setRowCount(rows_ - 1);
    }
    setU16(page_ + kFreeBytes, end(rows_) - layout_.rowOffsets - rows_ * kEntry);
}

}  // namespace varo::access
