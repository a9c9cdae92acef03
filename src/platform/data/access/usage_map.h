#pragma once

#include "platform/data/access/page_file.h"

#include <functional>
#include <optional>
#include <vector>

namespace varo::access {

/// A row of a page: the way in which an Access file refers to one.
struct RowPlace {
    PageNumber page = 0;
    int row = 0;

    /// The place that four bytes of the file name: the row, then the page.
    static RowPlace read(const Bytes& bytes, qsizetype at) {
        return {bytes.u24(at + 1), bytes.byte(at)};
    }
    void write(char* to) const {
        qToLittleEndian((quint32{page} << 8) | static_cast<quint32>(row), to);
    }
    bool operator==(const RowPlace&) const = default;
};

/// The pages that the usage map at `place` marks, in ascending order; those behind the end of the
/// file are left out. Throws data::Error when the map is damaged.
std::vector<PageNumber> markedPages(PageFile& file, RowPlace place);

/// The pages with bits to which the usage map at `place` refers. Throws data::Error when the map is
/// damaged.
std::vector<PageNumber> bitPages(PageFile& file, RowPlace place);

/// Bytes of a map in a row when it is new; of zeros, it marks no page.
inline constexpr int kMapBytes = 69;

/// The first one from `from` on, nothing when there is none.
std::optional<PageNumber> firstMarked(PageFile& file, RowPlace place, PageNumber from);

/// Marks the page in the usage map of a table or an index at `place`, or takes its mark away. A map
/// that cannot hold the number becomes one of references to pages from PageFile::add(). Throws
/// data::Error when the map is damaged.
void setMarked(PageFile& file, RowPlace place, PageNumber number, bool isMarked);

/// The same in the map of the free pages of the file, which also marks pages behind its end;
/// further pages come from `newPage`, whose own marks are left to the caller.
void setFree(PageFile& file, RowPlace place, PageNumber number, bool isFree,
             const std::function<PageNumber()>& newPage);

}  // namespace varo::access
