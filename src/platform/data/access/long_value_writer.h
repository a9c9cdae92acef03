#pragma once

#include "platform/data/access/row_pages.h"
#include "platform/data/access/table_definition.h"

namespace varo::access {

/// What a row holds of a memo or OLE value whose pages have been written.
struct LongField {
    QByteArray bytes;
};

/// Writes the value of a memo or OLE column, in a transaction of the file: a short one into the
/// field itself, a longer one onto the column's pages, in pieces where one page does not take it.
/// Until a row has the field, undoing the transaction is the only way to free the pages.
class LongValueWriter {
  public:
    /// For a value of `size` bytes, as the file is to hold them: see storedText() for a memo's.
    /// Throws data::Error when it is too long.
    LongValueWriter(PageFile& file, const LongValuePages& pages, qint64 size);

    /// The next bytes of the value. Throws data::Error when a page cannot be written.
    void append(const Bytes& bytes);

    /// The field, after all bytes were appended.
    LongField finish();

  private:
    qsizetype nextPieceSize() const;
    void writePiece();

    PageFile& file_;
    RowPages pages_;
    qint64 size_;
    qint64 left_;  ///< bytes that no piece has yet
    QByteArray piece_;
    RowPlace first_;
    RowPlace last_;
};

/// Frees the pages of the value of a field.
void freeLongValue(PageFile& file, const LongValuePages& pages, const Bytes& field);

}  // namespace varo::access
