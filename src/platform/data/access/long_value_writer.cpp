#include "platform/data/access/long_value_writer.h"

#include "platform/data/access/long_value.h"
#include "platform/data/access/long_value_format.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr qsizetype kMostInRow = 64;
constexpr qsizetype kMostOnPage = 4076;  ///< with the place of the next piece

RowPages pagesOf(PageFile& file, const LongValuePages& pages) {
    return {file, kLongValueOwner, pages.owned, pages.withRoom};
}

QByteArray header(qint64 size, quint32 flags, RowPlace place) {
    QByteArray field(kLongHeader, '\0');
    qToLittleEndian(static_cast<quint32>(size) | flags, field.data());
    place.write(field.data() + kLongPlace);
    return field;
}

}  // namespace

LongValueWriter::LongValueWriter(PageFile& file, const LongValuePages& pages, qint64 size)
    : file_(file), pages_(pagesOf(file, pages)), size_(size), left_(size) {
    if (size < 0 || size > kLongLength) {
        throw data::Error(QStringLiteral("a value of %1 bytes is too long").arg(size));
    }
}

qsizetype LongValueWriter::nextPieceSize() const {
    if (size_ <= kMostOnPage) {
        return size_;
    }
    return std::min<qint64>(kMostOnPage - kNextPiece, left_);
}

void LongValueWriter::append(const Bytes& bytes) {
    if (bytes.size() > left_ - piece_.size()) {
        throw data::Error(QStringLiteral("a long value has more bytes than announced"));
    }
    for (qsizetype at = 0; at < bytes.size();) {
        const qsizetype count = std::min(nextPieceSize() - piece_.size(), bytes.size() - at);
        piece_.append(bytes.data() + at, count);
        at += count;
        if (size_ > kMostInRow && piece_.size() == nextPieceSize()) {
            writePiece();
        }
    }
}

void LongValueWriter::writePiece() {
    const bool isOnly = size_ <= kMostOnPage;
    left_ -= piece_.size();
    const RowPlace place =
        pages_.add(Bytes(isOnly ? piece_ : QByteArray(kNextPiece, '\0') + piece_));
    piece_.clear();
    if (first_.page == 0) {
        first_ = place;
    } else {
        const RowEntry before = rowEntry(file_.layout(), Bytes(*file_.page(last_.page)), last_.row);
        place.write(file_.change(last_.page) + before.begin);
    }
    last_ = place;
}

LongField LongValueWriter::finish() {
    if (size_ <= kMostInRow && piece_.size() == size_) {
        return {header(size_, kLongInRow, {}) + piece_};
    }
    if (left_ != 0) {
        throw data::Error(QStringLiteral("a long value has fewer bytes than announced"));
    }
    return {header(size_, size_ <= kMostOnPage ? kLongInOnePiece : 0, first_)};
}

void freeLongValue(PageFile& file, const LongValuePages& pages, const Bytes& field) {
    if (field.isEmpty()) {
        return;
    }
    const quint32 flags = field.u32(0) & ~kLongLength;
    RowPlace place = RowPlace::read(field, kLongPlace);
    if ((flags & kLongInRow) != 0 || place.page == 0) {
        return;
    }
    RowPages all = pagesOf(file, pages);
    if ((flags & kLongInOnePiece) != 0) {
        all.remove(place);
        return;
    }
    for (qint64 left = longValueSize(field); left > 0;) {
        const Page page = file.page(place.page, PageKind::Data);
        const Bytes piece = rowBytes(file.layout(), Bytes(*page), place.row);
        const RowPlace next = RowPlace::read(piece, 0);
        left -= piece.size() - kNextPiece;
        if (piece.size() <= kNextPiece) {
            throwDamaged("a long value has an empty piece");
        }
        all.remove(place);
        place = next;
    }
}

}  // namespace varo::access
