#include "platform/ui/metafile_bitmap.h"

#include "platform/ui/raster_picture.h"

#include <QtEndian>

#include <algorithm>

namespace varo::ui {

namespace {

constexpr qint64 kBitmapLimit = 16'000'000;

}  // namespace

/// The file header is made up, and the bytes read as a file.
QImage bitmapIn(QByteArrayView bits) {
    constexpr qsizetype kFileHeaderSize = 14;
    constexpr quint32 kOldHeaderSize = 12;
    constexpr quint32 kHeaderSize = 40;
    constexpr quint32 kMasks = 3;
    if (bits.size() < qsizetype{kHeaderSize}) {
        return {};
    }
    const auto wordAt = [&](qsizetype at) { return qFromLittleEndian<quint16>(bits.data() + at); };
    const auto longAt = [&](qsizetype at) { return qFromLittleEndian<quint32>(bits.data() + at); };
    const quint32 headerSize = longAt(0);
    const bool isOld = headerSize == kOldHeaderSize;
    if (!isOld && (headerSize < kHeaderSize || headerSize > bits.size())) {
        return {};
    }
    const quint32 depth = wordAt(isOld ? 10 : 14);
    quint32 colors = isOld ? 0 : longAt(32);
    if (colors == 0 && depth <= 8) {
        colors = 1U << depth;
    }
    const quint32 masks = !isOld && headerSize == kHeaderSize && longAt(16) == kMasks ? 12 : 0;
    const quint32 table = std::min(colors, 256U) * (isOld ? 3 : 4);

    QByteArray file(kFileHeaderSize, '\0');
    file.replace(0, 2, "BM");
    const auto put = [&](qsizetype at, quint32 number) {
        qToLittleEndian(number, file.data() + at);
    };
    put(2, static_cast<quint32>(kFileHeaderSize + bits.size()));
    put(10, static_cast<quint32>(kFileHeaderSize) + headerSize + masks + table);
    file.append(bits);
    return readRaster(file, kBitmapLimit, static_cast<int>(kBitmapLimit)).image;
}

}  // namespace varo::ui
