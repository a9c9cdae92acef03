#pragma once

#include "platform/data/access/page_file.h"

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
};

/// The pages that the usage map at `place` marks, in ascending order; those behind the end of the
/// file are left out. Throws data::Error when the map is damaged.
std::vector<PageNumber> markedPages(PageFile& file, RowPlace place);

}  // namespace varo::access
