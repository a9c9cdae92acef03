#pragma once

#include "platform/data/access/data_page.h"
#include "platform/data/access/table_definition.h"

#include <optional>

namespace varo::access {

/// The fields of one row of a table, as its page holds them.
class Row {
  public:
    /// Takes the row apart whose bytes are `bytes`, a part of `page`. Throws data::Error when it is
    /// damaged.
    Row(const Layout& layout, const TableDefinition& table, Page page, const Bytes& bytes);

    /// The bytes of a field; nothing when it is NULL, also where the row is older than the column.
    /// A field of yes and no has none and is never NULL.
    std::optional<Bytes> field(const Column& column) const;
    bool isYes(const Column& column) const;

  private:
    bool isMarked(int number) const;
    int variableOffset(int variable) const;

    const Layout& layout_;
    Page page_;
    Bytes bytes_;
    Bytes marks_;  ///< a bit for each column, by number: whether the field is not NULL
    int columns_ = 0;
    int variables_ = 0;
    int offsets_ = 0;  ///< where the first of the places of the variable fields is
    int jumps_ = 0;    ///< where a place in one byte comes to another 256, and how many there are
    int jumpCount_ = 0;
};

/// Bytes that a field of a column of fixed length takes.
int fixedSize(const Column& column);

/// Where the row at `place` is, and its bytes. Follows the references of a row that has moved.
/// Throws data::Error when that is damaged; nothing when the row was deleted.
struct FoundRow {
    Page page;
    Bytes bytes;
};
std::optional<FoundRow> findRow(PageFile& file, RowPlace place);

/// Goes through the rows of a table, page by page in ascending order, in each page in the order of
/// its directory. It is the order of rowNumber().
class RowScan {
  public:
    RowScan(PageFile& file, const TableDefinition& table);

    /// Goes to the next row; nothing at the end.
    std::optional<FoundRow> next();

    /// The place of the row that next() has given.
    RowPlace place() const { return place_; }

  private:
    PageFile& file_;
    PageNumber owner_;
    std::vector<PageNumber> pages_;
    std::size_t nextPage_ = 0;
    Page page_;
    int rows_ = 0;
    int nextRow_ = 0;
    RowPlace place_;
};

/// A number for the row at a place, which stays for as long as the row is there.
constexpr qint64 rowNumber(RowPlace place) {
    return (qint64{place.page} << 8) | place.row;
}
constexpr RowPlace rowPlace(qint64 number) {
    return {static_cast<PageNumber>(number >> 8), static_cast<int>(number & 0xFF)};
}

}  // namespace varo::access
