#include "platform/data/access/index_entries.h"

#include "platform/data/access/page_file.h"

#include <algorithm>
#include <bit>
#include <cstring>

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

/// Writes which bytes are the last of an entry, and how many are free.
void writeEnds(const Layout& layout, char* page, const std::vector<quint16>& ends) {
    char* mask = page + layout.indexMask;
    std::memset(mask, 0, static_cast<std::size_t>(layout.indexEntries - layout.indexMask));
    for (const quint16 end : ends) {
        mask[end / 8] = static_cast<char>(mask[end / 8] | 1 << end % 8);
    }
    const int room = layout.pageSize - layout.indexEntries;
    qToLittleEndian(static_cast<quint16>(room - ends.back()), page + kFree);
}

}  // namespace

IndexEntries::IndexEntries(const Layout& layout, const Bytes& page)
    : content_(page.from(layout.indexEntries)) {
    const auto kind = static_cast<PageKind>(page.byte(0));
    if (kind != PageKind::IndexNode && kind != PageKind::IndexLeaf) {
        throwDamaged("a page of an index is none");
    }
    isNode_ = kind == PageKind::IndexNode;
    const Bytes mask = page.part(layout.indexMask, layout.indexEntries - layout.indexMask);
    constexpr qsizetype kWord = 8;
    constexpr std::size_t kUsualEntries = 512;
    ends_.reserve(kUsualEntries);
    for (qsizetype i = 0; i < mask.size(); i += kWord) {
        quint64 bits = 0;
        if (i + kWord <= mask.size()) {
            bits = qFromLittleEndian<quint64>(mask.data() + i);
        } else {
            std::memcpy(&bits, mask.data() + i, static_cast<std::size_t>(mask.size() - i));
            bits = qFromLittleEndian(bits);
        }
        for (; bits != 0; bits &= bits - 1) {
            ends_.push_back(static_cast<quint16>(i * 8 + std::countr_zero(bits)));
        }
    }
    if (isEmpty()) {
        return;
    }
    const int prefix =
        layout.hasWideNumbers ? page.u16(layout.indexPrefix) : page.byte(layout.indexPrefix);
    prefix_ = std::min(prefix, int{ends_.front()});
    const int least = isNode_ ? kPlace + kChild : kPlace;
    int begin = 0;
    for (const quint16 end : ends_) {
        if (end > content_.size() || (begin == 0 ? 0 : prefix_) + end - begin < least) {
            throwDamaged("an entry of an index is too short");
        }
        begin = end;
    }
}

Bytes IndexEntries::piece(std::size_t position) const {
    const int begin = position == 0 ? 0 : ends_[position - 1];
    return content_.part(begin, ends_[position] - begin);
}

QByteArray IndexEntries::at(std::size_t position) const {
    const Bytes own = piece(position);
    QByteArray entry;
    const int prefix = position == 0 ? 0 : prefix_;
    entry.reserve(prefix + own.size());
    entry.append(content_.data(), prefix);
    entry.append(own.data(), own.size());
    return entry;
}

QByteArray IndexEntries::bound(std::size_t position) const {
    QByteArray entry = at(position);
    entry.chop(kChild);
    return entry;
}

quint32 IndexEntries::child(std::size_t position) const {
    const QByteArray entry = at(position);
    return Bytes(entry).bigU32(entry.size() - kChild);
}

int IndexEntries::compare(std::size_t position, const QByteArray& entry) const {
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

std::size_t IndexEntries::firstNotBefore(const QByteArray& entry) const {
    std::size_t first = 0;
    // Most of what is added comes at the end.
    if (!isEmpty() && compare(size() - 1, entry) < 0) {
        return size();
    }
    for (std::size_t last = size(); first < last;) {
        const std::size_t middle = first + (last - first) / 2;
        if (compare(middle, entry) < 0) {
            first = middle + 1;
        } else {
            last = middle;
        }
    }
    return first;
}

bool IndexEntries::insertInPlace(const Layout& layout, char* page, std::size_t position,
                                 const QByteArray& entry) const {
    const auto length = static_cast<int>(entry.size()) - prefix_;
    if (isNode_ || position == 0 || length < kPlace || used() + length > content_.size() ||
        std::memcmp(content_.data(), entry.constData(), static_cast<std::size_t>(prefix_)) != 0) {
        return false;
    }
    char* content = page + layout.indexEntries;
    const auto at = static_cast<std::ptrdiff_t>(position);
    const int begin = ends_[position - 1];
    std::memmove(content + begin + length, content + begin,
                 static_cast<std::size_t>(used() - begin));
    std::memcpy(content + begin, entry.constData() + prefix_, static_cast<std::size_t>(length));
    auto ends = ends_;
    ends.insert(ends.begin() + at, static_cast<quint16>(begin));
    std::for_each(ends.begin() + at, ends.end(),
                  [&](quint16& end) { end = static_cast<quint16>(end + length); });
    writeEnds(layout, page, ends);
    return true;
}

bool IndexEntries::removeInPlace(const Layout& layout, char* page, std::size_t position) const {
    if (isNode_ || position == 0 || position + 1 >= size()) {
        return false;
    }
    const auto length = static_cast<int>(piece(position).size());
    const auto at = static_cast<std::ptrdiff_t>(position);
    if (used() - length <= content_.size() / 2) {
        return false;
    }
    char* content = page + layout.indexEntries;
    std::memmove(content + ends_[position] - length, content + ends_[position],
                 static_cast<std::size_t>(used() - ends_[position]));
    std::memset(content + used() - length, 0, static_cast<std::size_t>(length));
    auto ends = ends_;
    ends.erase(ends.begin() + at);
    std::for_each(ends.begin() + at, ends.end(),
                  [&](quint16& end) { end = static_cast<quint16>(end - length); });
    writeEnds(layout, page, ends);
    return true;
}

}  // namespace varo::access
