#pragma once

#include "platform/data/access/format.h"
#include "platform/data/access/page_file.h"

namespace varo::access {

/// What the directory of a page says of a row.
struct RowEntry {
    int begin;
    int end;
    bool isDeleted;  ///< or the rest of a row that moved here, which its first place refers to
    bool hasMoved;   ///< it holds the place where the row is
};

/// Number of the rows on a page of rows, with those that were deleted.
int rowCount(const Layout& layout, const Bytes& page);

/// The entry number `row`, its bytes within the page. Throws data::Error when there is none, or it
/// is damaged.
RowEntry rowEntry(const Layout& layout, const Bytes& page, int row);

/// The bytes of such a row.
Bytes rowBytes(const Layout& layout, const Bytes& page, int row);

/// The number of the definition of the table to which a page of rows belongs.
PageNumber ownerOf(const Bytes& page);

}  // namespace varo::access
