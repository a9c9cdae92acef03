#pragma once

#include "platform/data/access/data_page.h"

namespace varo::access {

/// The longest row that a page of rows takes.
inline constexpr int kMostRowBytes = 4060;

/// Rows that a page can have: a place names one with a byte.
inline constexpr int kMostRowsOnPage = 255;

/// Changes the rows of a page of rows in memory. The bytes of a row that was removed are given back
/// to the page; the other rows keep their numbers.
class RowPage {
  public:
    /// What the directory says of a row besides its place.
    enum class Kind : quint16 {
        Row = 0,
        MovedHere = 0x8000,  ///< the rest of a row whose first place is elsewhere
        Reference = 0x4000,  ///< four bytes with the place to which the row moved
        Removed = 0xC000,
    };

    /// The page whose bytes are at `page`. Throws data::Error when its directory is damaged.
    RowPage(const Layout& layout, char* page);

    /// Makes a page of zeros a page of rows without a row, of the table whose definition, or the
    /// kind of long values whose mark, is `owner`.
    static void clear(const Layout& layout, char* page, PageNumber owner);

    /// Throws data::Error when the page has no row with this number, or it was removed.
    void requireRow(int row) const;

    /// Whether no row but removed ones is there.
    bool isEmpty() const;

    /// The longest row that can be added; -1 when none can.
    int roomForNew() const;

    /// The longest one that can replace the row with this number.
    int roomFor(int row) const;

    /// Adds a row of at most roomForNew() bytes and returns its number. `content` must not be a
    /// part of this page, also in the following.
    int add(const Bytes& content, Kind kind);

    /// Replaces a row by one of at most roomFor() bytes.
    void replace(int row, const Bytes& content, Kind kind);

    void remove(int row);

  private:
    Bytes bytes() const;
    quint16 directory(int row) const;
    void setDirectory(int row, int offset, Kind kind);
    bool isRemoved(int row) const;
    int begin(int row) const;
    int end(int row) const;
    int firstRemoved() const;
    void setRowCount(int count);
    void resize(int row, int size, Kind kind);
    void giveBackRemoved();

    const Layout& layout_;
    char* page_;
    int rows_;
    int removedBytes_ = 0;
};

}  // namespace varo::access
