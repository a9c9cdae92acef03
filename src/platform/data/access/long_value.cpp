#include "platform/data/access/long_value.h"

#include "platform/data/access/long_value_format.h"
#include "platform/data/access/row.h"

namespace varo::access {

namespace {

Page pageOf(PageFile& file, RowPlace place) {
    Page page = file.page(place.page, PageKind::Data);
    if (ownerOf(Bytes(*page)) != kLongValueOwner) {
        throwDamaged("a long value is on a page of another kind");
    }
    return page;
}

}  // namespace

qint64 longValueSize(const Bytes& field) {
    return field.u32(0) & kLongLength;
}

void readLongValue(PageFile& file, const Bytes& field,
                   const std::function<void(const Bytes&)>& take) {
    const qint64 size = longValueSize(field);
    const quint32 flags = field.u32(0) & ~kLongLength;
    if ((flags & kLongInRow) != 0) {
        take(field.part(kLongHeader, size));
        return;
    }
    if (size > qint64{file.pageCount()} * file.layout().pageSize) {
        throwDamaged("a long value is longer than the file");
    }
    RowPlace place = RowPlace::read(field, kLongPlace);
    if ((flags & kLongInOnePiece) != 0) {
        const Page page = pageOf(file, place);
        take(rowBytes(file.layout(), Bytes(*page), place.row).part(0, size));
        return;
    }
    for (qint64 left = size; left > 0;) {
        const Page page = pageOf(file, place);
        const Bytes piece = rowBytes(file.layout(), Bytes(*page), place.row);
        const Bytes content = piece.from(kNextPiece);
        if (content.isEmpty()) {
            throwDamaged("a long value has an empty piece");
        }
        take(content.part(0, std::min<qint64>(content.size(), left)));
        left -= content.size();
        place = RowPlace::read(piece, 0);
    }
}

QByteArray longValue(PageFile& file, const Bytes& field) {
    QByteArray value;
    value.reserve(std::min<qint64>(longValueSize(field), 1 << 20));
    readLongValue(file, field,
                  [&](const Bytes& piece) { value.append(piece.data(), piece.size()); });
    return value;
}

}  // namespace varo::access
