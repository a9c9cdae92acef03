#include "platform/data/access/index_entries.h"

#include "platform/data/access/page_file.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>

namespace varo::access {

namespace {

constexpr int kFree = 2;
constexpr int kPlace = 4;  ///< bytes behind a key
constexpr int kChild = 4;  ///< bytes behind the place, on a node

/// Compares as memcmp() does; what another one begins with is less.
int compareBytes(const char* one, qsizetype oneSize, const char* other, qsizetype otherSize) {
    const int order =
        std::memcmp(one, other, static_cast<std::size_t>(std::min(oneSize, otherSize)));
    return order != 0 ? order : (oneSize > otherSize) - (oneSize < otherSize);
}

constexpr int kWord = 8;  ///< bytes of a mask that are looked at in one step
constexpr int kWordBits = 64;

/// The bits of the mask from `word` times kWordBits on, the lowest first.
quint64 wordOf(const Bytes& mask, int word) {
    const int at = word * kWord;
    if (at + kWord <= mask.size()) {
        return qFromLittleEndian<quint64>(mask.data() + at);
    }
    quint64 bits = 0;
    std::memcpy(&bits, mask.data() + at, static_cast<std::size_t>(mask.size() - at));
    return qFromLittleEndian(bits);
}

/// The first bit that is set from `bit` on; nothing when none is.
std::optional<int> firstBit(const Bytes& mask, int bit) {
    const int words = static_cast<int>((mask.size() + kWord - 1) / kWord);
    quint64 wanted = ~quint64{0} << bit % kWordBits;
    for (int word = bit / kWordBits; word < words; ++word, wanted = ~quint64{0}) {
        if (const quint64 bits = wordOf(mask, word) & wanted; bits != 0) {
            return word * kWordBits + std::countr_zero(bits);
        }
    }
    return std::nullopt;
}

/// The last bit that is set up to `bit`, which is one of the mask; nothing when none is.
std::optional<int> lastBit(const Bytes& mask, int bit) {
    quint64 wanted = ~quint64{0} >> (kWordBits - 1 - bit % kWordBits);
    for (int word = bit / kWordBits; word >= 0; --word, wanted = ~quint64{0}) {
        if (const quint64 bits = wordOf(mask, word) & wanted; bits != 0) {
            return word * kWordBits + kWordBits - 1 - std::countl_zero(bits);
        }
    }
    return std::nullopt;
}

void flip(char* mask, int bit) {
    mask[bit / 8] = static_cast<char>(mask[bit / 8] ^ 1 << bit % 8);
}

void writeFree(const Layout& layout, char* page, int end) {
    const int room = layout.pageSize - layout.indexEntries;
    qToLittleEndian(static_cast<quint16>(room - end), page + kFree);
}

}  // namespace

IndexEntries::IndexEntries(const Layout& layout, const Bytes& page)
    : mask_(page.part(layout.indexMask, layout.indexEntries - layout.indexMask)),
      content_(page.from(layout.indexEntries)) {
    const auto kind = static_cast<PageKind>(page.byte(0));
    if (kind != PageKind::IndexNode && kind != PageKind::IndexLeaf) {
        throwDamaged("a page of an index is none");
    }
    isNode_ = kind == PageKind::IndexNode;
    end_ = lastBit(mask_, static_cast<int>(mask_.size()) * 8 - 1).value_or(0);
    if (end_ > content_.size()) {
        throwDamaged("the entries of an index do not fit their page");
    }
    if (isEmpty()) {
        return;
    }
    const int prefix =
        layout.hasWideNumbers ? page.u16(layout.indexPrefix) : page.byte(layout.indexPrefix);
    prefix_ = std::min(prefix, next(0));
}

/// Where the entry begins that has the byte at `offset`.
int IndexEntries::beginAt(int offset) const {
    return lastBit(mask_, offset).value_or(0);
}

int IndexEntries::next(int position) const {
    return firstBit(mask_, position + 1).value_or(end_);
}

Bytes IndexEntries::piece(int position) const {
    const int length = next(position) - position;
    const int least = isNode_ ? kPlace + kChild : kPlace;
    if ((position == 0 ? 0 : prefix_) + length < least) {
        throwDamaged("an entry of an index is too short");
    }
    return content_.part(position, length);
}

QByteArray IndexEntries::at(int position) const {
    const Bytes own = piece(position);
    QByteArray entry;
    const int prefix = position == 0 ? 0 : prefix_;
    entry.reserve(prefix + own.size());
    entry.append(content_.data(), prefix);
    entry.append(own.data(), own.size());
    return entry;
}

QByteArray IndexEntries::bound(int position) const {
    QByteArray entry = at(position);
    entry.chop(kChild);
    return entry;
}

quint32 IndexEntries::child(int position) const {
    const QByteArray entry = at(position);
    return Bytes(entry).bigU32(entry.size() - kChild);
}

int IndexEntries::compare(int position, const QByteArray& entry) const {
    const Bytes own = piece(position);
    const int prefix = position == 0 ? 0 : prefix_;
    const qsizetype size = prefix + own.size() - (isNode_ ? kChild : 0);
    const qsizetype common = std::min<qsizetype>({prefix, size, entry.size()});
    const int order =
        std::memcmp(content_.data(), entry.constData(), static_cast<std::size_t>(common));
    if (order != 0 || common < prefix) {
        return order != 0 ? order : (size > entry.size()) - (size < entry.size());
    }
    return compareBytes(own.data(), size - prefix, entry.constData() + prefix,
                        entry.size() - prefix);
}

int IndexEntries::firstNotBefore(const QByteArray& entry) const {
    // Most of what is added comes at the end.
    if (isEmpty() || compare(last(), entry) < 0) {
        return end_;
    }
    int first = 0;
    for (int behind = end_; first < behind;) {
        const int middle = std::max(first, beginAt(first + (behind - first) / 2));
        if (compare(middle, entry) < 0) {
            first = next(middle);
        } else {
            behind = middle;
        }
    }
    return first;
}

bool IndexEntries::insertInPlace(const Layout& layout, char* page, int position,
                                 const QByteArray& entry) const {
    const auto length = static_cast<int>(entry.size()) - prefix_;
    if (isNode_ || position == 0 || length < kPlace || end_ + length > content_.size() ||
        std::memcmp(content_.data(), entry.constData(), static_cast<std::size_t>(prefix_)) != 0) {
        return false;
    }
    char* content = page + layout.indexEntries;
    std::memmove(content + position + length, content + position,
                 static_cast<std::size_t>(end_ - position));
    std::memcpy(content + position, entry.constData() + prefix_, static_cast<std::size_t>(length));
    char* mask = page + layout.indexMask;
    for (int end = end_; end > position; end = beginAt(end - 1)) {
        flip(mask, end);
        flip(mask, end + length);
    }
    flip(mask, position + length);
    writeFree(layout, page, end_ + length);
    return true;
}

bool IndexEntries::removeInPlace(const Layout& layout, char* page, int position) const {
    if (isNode_ || position == 0 || position >= last()) {
        return false;
    }
    const auto length = static_cast<int>(piece(position).size());
    if (end_ - length <= content_.size() / 2) {
        return false;
    }
    const int behind = position + length;
    char* content = page + layout.indexEntries;
    std::memmove(content + position, content + behind, static_cast<std::size_t>(end_ - behind));
    std::memset(content + end_ - length, 0, static_cast<std::size_t>(length));
    char* mask = page + layout.indexMask;
    flip(mask, behind);
    for (int begin = behind; begin < end_;) {
        begin = next(begin);
        flip(mask, begin);
        flip(mask, begin - length);
    }
    writeFree(layout, page, end_ - length);
    return true;
}

}  // namespace varo::access
