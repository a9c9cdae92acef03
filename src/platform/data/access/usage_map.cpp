#include "platform/data/access/usage_map.h"

#include "platform/data/access/data_page.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr quint8 kInline = 0;      ///< a number of a page, then a bit for it and those behind it
constexpr quint8 kReferences = 1;  ///< numbers of pages with the bits, 0 for one without a bit set
constexpr int kInlineStart = 1;    ///< where the number of the first page is
constexpr int kInlineBits = 5;
constexpr int kFirstReference = 1;
constexpr int kReferenceLength = 4;
constexpr int kBitmapStart = 4;  ///< on a page with bits

/// Receives the numbers of pages, in ascending order, until it returns false.
using Take = std::function<bool(PageNumber)>;

/// Some bits of a map, the first one of which is for the page `first`.
struct Bitmap {
    Bytes bytes;
    quint64 first;
};

/// Hands the pages from `from` on and below `pageCount` whose bits are set to `take`; false when
/// that returned false.
bool visitBits(const Bitmap& bits, PageNumber from, quint32 pageCount, const Take& take) {
    const quint64 skipped = from > bits.first ? (from - bits.first) / 8 : 0;
    for (auto i = static_cast<qsizetype>(skipped); i < bits.bytes.size(); ++i) {
        const quint8 byte = bits.bytes.byte(i);
        for (unsigned bit = 0; byte != 0 && bit < 8; ++bit) {
            const quint64 number = bits.first + static_cast<quint64>(i) * 8 + bit;
            if ((byte >> bit & 1) != 0 && number >= from && number < pageCount &&
                !take(static_cast<PageNumber>(number))) {
                return false;
            }
        }
    }
    return true;
}

void setBit(char* bits, quint64 index, bool isSet) {
    const auto mask = static_cast<quint8>(1U << (index % 8));
    auto& byte = reinterpret_cast<quint8&>(bits[index / 8]);
    byte = static_cast<quint8>(isSet ? byte | mask : byte & ~mask);
}

/// How many pages a page with bits is for.
quint64 pagesEach(PageFile& file) {
    return static_cast<quint64>(file.layout().pageSize - kBitmapStart) * 8;
}

/// The row that is a usage map.
struct MapRow {
    Page holder;
    int begin;
    Bytes bytes;

    MapRow(PageFile& file, RowPlace place) : holder(file.page(place.page, PageKind::Data)) {
        begin = rowEntry(file.layout(), Bytes(*holder), place.row).begin;
        bytes = rowBytes(file.layout(), Bytes(*holder), place.row);
        if (bytes.byte(0) != kInline && bytes.byte(0) != kReferences) {
            throwDamaged("a map of pages is of no known kind");
        }
    }

    bool isInline() const { return bytes.byte(0) == kInline; }
    Bitmap inlineBits() const { return {bytes.from(kInlineBits), bytes.u32(kInlineStart)}; }
    qsizetype referenceCount() const { return (bytes.size() - kFirstReference) / kReferenceLength; }
    PageNumber reference(qsizetype i) const {
        return bytes.u32(kFirstReference + i * kReferenceLength);
    }
};

void visitMarked(PageFile& file, RowPlace place, PageNumber from, const Take& take) {
    const MapRow map(file, place);
    if (map.isInline()) {
        visitBits(map.inlineBits(), from, file.pageCount(), take);
        return;
    }
    const quint64 each = pagesEach(file);
    for (auto i = static_cast<qsizetype>(from / each); i < map.referenceCount(); ++i) {
        const quint64 first = static_cast<quint64>(i) * each;
        if (map.reference(i) == 0 || first >= file.pageCount()) {
            continue;
        }
        const Page page = file.page(map.reference(i), PageKind::UsageMap);
        if (!visitBits({Bytes(*page).from(kBitmapStart), first}, from, file.pageCount(), take)) {
            return;
        }
    }
}

/// Changes one map.
class MapWriter {
  public:
    MapWriter(PageFile& file, RowPlace place, bool isOfFreePages,
              std::function<PageNumber()> newPage)
        : file_(file), place_(place), isOfFreePages_(isOfFreePages), newPage_(std::move(newPage)) {}

    void set(PageNumber number, bool isMarked) {
        const MapRow map(file_, place_);
        if (!map.isInline()) {
            setReferenced(map, number, isMarked);
            return;
        }
        const Bitmap bits = map.inlineBits();
        if (number >= bits.first && number - bits.first < inlineRange(map)) {
            setBit(file_.change(place_.page) + map.begin + kInlineBits, number - bits.first,
                   isMarked);
            return;
        }
        // What an inline map has no bit for is not of the table, or free.
        if ((!isMarked && !isOfFreePages_) || (!isOfFreePages_ && moveInline(map, number))) {
            return;
        }
        makeReferences(map);
        setReferenced(MapRow(file_, place_), number, isMarked);
    }

  private:
    static quint64 inlineRange(const MapRow& map) {
        return static_cast<quint64>(map.bytes.size() - kInlineBits) * 8;
    }

    /// Clears the map and makes it one of this kind.
    char* rewrite(const MapRow& map, quint8 kind) {
        char* bytes = file_.change(place_.page) + map.begin;
        std::fill_n(bytes, map.bytes.size(), '\0');
        bytes[0] = static_cast<char>(kind);
        return bytes;
    }

    /// Marks the page in an inline map that begins elsewhere, if there is room for all then.
    bool moveInline(const MapRow& map, PageNumber number) {
        std::vector<PageNumber> marked = markedPages(file_, place_);
        marked.push_back(number);
        const auto [least, greatest] = std::minmax_element(marked.begin(), marked.end());
        const PageNumber start = *least / 8 * 8;  // other programs expect whole bytes
        if (*greatest - start >= inlineRange(map)) {
            return false;
        }
        char* bytes = rewrite(map, kInline);
        qToLittleEndian<quint32>(start, bytes + kInlineStart);
        for (const PageNumber each : marked) {
            setBit(bytes + kInlineBits, each - start, true);
        }
        return true;
    }

    void makeReferences(const MapRow& map) {
        const std::vector<PageNumber> marked = markedPages(file_, place_);
        rewrite(map, kReferences);
        for (const PageNumber each : marked) {
            setReferenced(MapRow(file_, place_), each, true);
        }
    }

    void setReferenced(const MapRow& map, PageNumber number, bool isMarked) {
        const quint64 each = pagesEach(file_);
        const auto index = static_cast<qsizetype>(number / each);
        if (index >= map.referenceCount()) {
            throwDamaged("a map of pages has no room for a page");
        }
        PageNumber bits = map.reference(index);
        if (bits == 0) {
            if (!isMarked && !isOfFreePages_) {
                return;
            }
            bits = addBits(number - number % each);
            qToLittleEndian<quint32>(bits, file_.change(place_.page) + map.begin + kFirstReference +
                                               index * kReferenceLength);
        }
        file_.page(bits, PageKind::UsageMap);
        setBit(file_.change(bits) + kBitmapStart, number % each, isMarked);
    }

    /// A page with bits for the pages from `first` on. Pages that the file does not have yet are
    /// marked in the map of free pages.
    PageNumber addBits(quint64 first) {
        const PageNumber number = newPage_();
        const quint64 existing = file_.pageCount();
        char* page = file_.change(number);
        page[0] = static_cast<char>(PageKind::UsageMap);
        page[1] = 1;
        for (quint64 i = existing > first ? existing - first : 0;
             isOfFreePages_ && i < pagesEach(file_); ++i) {
            setBit(page + kBitmapStart, i, true);
        }
        return number;
    }

    PageFile& file_;
    RowPlace place_;
    bool isOfFreePages_;
    std::function<PageNumber()> newPage_;
};

}  // namespace

std::vector<PageNumber> markedPages(PageFile& file, RowPlace place) {
    std::vector<PageNumber> pages;
    visitMarked(file, place, 0, [&](PageNumber number) {
        pages.push_back(number);
        return true;
    });
    return pages;
}

std::vector<PageNumber> bitPages(PageFile& file, RowPlace place) {
    const MapRow map(file, place);
    std::vector<PageNumber> pages;
    for (qsizetype i = 0; !map.isInline() && i < map.referenceCount(); ++i) {
        if (map.reference(i) != 0) {
            pages.push_back(map.reference(i));
        }
    }
    return pages;
}

std::optional<PageNumber> firstMarked(PageFile& file, RowPlace place, PageNumber from) {
    std::optional<PageNumber> found;
    visitMarked(file, place, from, [&](PageNumber number) {
        found = number;
        return false;
    });
    return found;
}

void setMarked(PageFile& file, RowPlace place, PageNumber number, bool isMarked) {
    MapWriter(file, place, false, [&] { return file.add(); }).set(number, isMarked);
}

void setFree(PageFile& file, RowPlace place, PageNumber number, bool isFree,
             const std::function<PageNumber()>& newPage) {
    MapWriter(file, place, true, newPage).set(number, isFree);
}

}  // namespace varo::access
