#pragma once

#include "platform/data/access/row_page.h"
#include "platform/data/access/usage_map.h"

namespace varo::access {

/// The pages of rows of a table, or those of the long values of a column, in a transaction of the
/// file: finds room for rows and keeps the maps of the pages right. Everything that fails throws
/// data::Error.
class RowPages {
  public:
    using Kind = RowPage::Kind;

    /// The pages that name `owner`, a table or kLongValueOwner, which the map `owned` marks; the
    /// map `withRoom` marks those of them that have room.
    RowPages(PageFile& file, PageNumber owner, RowPlace owned, RowPlace withRoom);

    /// Puts a row where there is room, else on a new page, and returns its place.
    RowPlace add(const Bytes& content, Kind kind = Kind::Row);

    /// Replaces the row at `place`; false when its page has no room.
    bool replace(RowPlace place, const Bytes& content, Kind kind);

    /// Removes the row at `place`. A page of long values that becomes empty is given back to the
    /// file; one of a table stays with it.
    void remove(RowPlace place);

  private:
    bool isOwn(PageNumber number);
    bool isMarked(RowPlace map, PageNumber number);
    bool hasRoom(PageNumber number, qsizetype size);
    std::optional<PageNumber> nextWithRoom();
    PageNumber pageWithRoom(qsizetype size);
    RowPage pageOf(RowPlace place);
    void setRoom(PageNumber number, bool hasRoom);

    PageFile& file_;
    PageNumber owner_;
    RowPlace owned_;
    RowPlace withRoom_;
    PageNumber last_ = 0;    ///< on which there was room
    PageNumber search_ = 0;  ///< the first page that the next search for room looks at
};

}  // namespace varo::access
