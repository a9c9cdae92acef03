#include "platform/data/access/usage_map.h"

#include "platform/data/access/data_page.h"

namespace varo::access {

namespace {

constexpr quint8 kInline = 0;      ///< a number of a page, then a bit for it and those behind it
constexpr quint8 kReferences = 1;  ///< numbers of pages with the bits, 0 for one without a bit set
constexpr int kBitmapStart = 4;    ///< on a page with bits

void addMarked(const Bytes& bits, quint64 first, quint32 pageCount,
               std::vector<PageNumber>& pages) {
    for (qsizetype i = 0; i < bits.size(); ++i) {
        const quint8 byte = bits.byte(i);
        for (int bit = 0; byte != 0 && bit < 8; ++bit) {
            const quint64 number = first + static_cast<quint64>(i) * 8 + static_cast<quint64>(bit);
            if ((byte >> bit & 1) != 0 && number < pageCount) {
                pages.push_back(static_cast<PageNumber>(number));
            }
        }
    }
}

}  // namespace

std::vector<PageNumber> markedPages(PageFile& file, RowPlace place) {
    const Page holder = file.page(place.page, PageKind::Data);
    const Bytes map = rowBytes(file.layout(), Bytes(*holder), place.row);
    std::vector<PageNumber> pages;
    switch (map.byte(0)) {
        case kInline:
            addMarked(map.from(5), map.u32(1), file.pageCount(), pages);
            break;
        case kReferences: {
            const quint64 pagesEach =
                static_cast<quint64>(file.layout().pageSize - kBitmapStart) * 8;
            for (qsizetype i = 0; 1 + (i + 1) * 4 <= map.size(); ++i) {
                const PageNumber number = map.u32(1 + i * 4);
                const quint64 first = static_cast<quint64>(i) * pagesEach;
                if (number != 0 && first < file.pageCount()) {
                    const Page bits = file.page(number, PageKind::UsageMap);
                    addMarked(Bytes(*bits).from(kBitmapStart), first, file.pageCount(), pages);
                }
            }
            break;
        }
        default:
            throwDamaged("a map of pages is of no known kind");
    }
    return pages;
}

}  // namespace varo::access
