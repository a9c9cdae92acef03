#include "platform/data/access/row_pages.h"

#include "platform/data/access/long_value_format.h"

namespace varo::access {

namespace {

/// A page with less room does not count as one with room.
constexpr int kLeastRoom = 128;

/// Pages with room that are looked at for a row before a new page is taken, so that an insert costs
/// the same in a table of any size.
constexpr int kMostTried = 8;

}  // namespace

RowPages::RowPages(PageFile& file, PageNumber owner, RowPlace owned, RowPlace withRoom)
    : file_(file), owner_(owner), owned_(owned), withRoom_(withRoom) {}

bool RowPages::isMarked(RowPlace map, PageNumber number) {
    return firstMarked(file_, map, number) == number;
}

bool RowPages::isOwn(PageNumber number) {
    const Page page = file_.page(number);
    const Bytes bytes(*page);
    return static_cast<PageKind>(bytes.byte(0)) == PageKind::Data && ownerOf(bytes) == owner_;
}

bool RowPages::hasRoom(PageNumber number, qsizetype size) {
    QByteArray copy = *file_.page(number);
    return RowPage(file_.layout(), copy.data()).roomForNew() >= size;
}

/// The pages that are marked as having room, one after the other and again from the first one on:
/// an empty page is found after some inserts however many with little room there are.
std::optional<PageNumber> RowPages::nextWithRoom() {
    auto page = firstMarked(file_, withRoom_, search_);
    if (!page) {
        page = firstMarked(file_, withRoom_, 0);
    }
    search_ = page.value_or(0) + 1;
    return page;
}

PageNumber RowPages::pageWithRoom(qsizetype size) {
    if (last_ != 0 && last_ < file_.pageCount() && isMarked(withRoom_, last_) && isOwn(last_) &&
        hasRoom(last_, size)) {
        return last_;
    }
    for (int tried = 0; tried < kMostTried; ++tried) {
        const auto page = nextWithRoom();
        if (!page) {
            break;
        }
        if (!isOwn(*page) || !hasRoom(*page, kLeastRoom)) {
            setMarked(file_, withRoom_, *page, false);
        } else if (hasRoom(*page, size)) {
            return *page;
        }
    }
    const PageNumber page = file_.add();
    RowPage::clear(file_.layout(), file_.change(page), owner_);
    setMarked(file_, owned_, page, true);
    setMarked(file_, withRoom_, page, true);
    return page;
}

void RowPages::setRoom(PageNumber number, bool hasRoom) {
    if (isMarked(withRoom_, number) != hasRoom) {
        setMarked(file_, withRoom_, number, hasRoom);
    }
}

RowPlace RowPages::add(const Bytes& content, Kind kind) {
    const PageNumber number = pageWithRoom(content.size());
    RowPage page(file_.layout(), file_.change(number));
    const RowPlace place{number, page.add(content, kind)};
    const bool hasRoom = page.roomForNew() >= kLeastRoom;
    setRoom(number, hasRoom);
    last_ = hasRoom ? number : 0;
    return place;
}

/// The page of a row that is there, to be changed.
RowPage RowPages::pageOf(RowPlace place) {
    if (!isOwn(place.page)) {
        throwDamaged("a row is on a page of another table");
    }
    RowPage page(file_.layout(), file_.change(place.page));
    page.requireRow(place.row);
    return page;
}

bool RowPages::replace(RowPlace place, const Bytes& content, Kind kind) {
    RowPage page = pageOf(place);
    if (page.roomFor(place.row) < content.size()) {
        return false;
    }
    page.replace(place.row, content, kind);
    setRoom(place.page, page.roomForNew() >= kLeastRoom);
    return true;
}

void RowPages::remove(RowPlace place) {
    RowPage page = pageOf(place);
    page.remove(place.row);
    const bool isEmpty = page.isEmpty();
    const bool hasRoom = page.roomForNew() >= kLeastRoom;
    if (isEmpty && owner_ == kLongValueOwner && isMarked(owned_, place.page)) {
        setRoom(place.page, false);
        setMarked(file_, owned_, place.page, false);
        file_.release(place.page);
        last_ = last_ == place.page ? 0 : last_;
    } else if (isMarked(owned_, place.page)) {
        setRoom(place.page, hasRoom);
    }
}

}  // namespace varo::access
