#include "platform/ui/metafile_bitmap.h"

#include "platform/ui/raster_picture.h"

#include <QtEndian>

#include <algorithm>

namespace varo::ui {

namespace {

constexpr qint64 BitmapLimit = 16'000'000;

}  // namespace

/// The file header is made up, and the bytes read as a file.
QImage bitmapIn(QByteArrayView bits) {
    constexpr qsizetype FileHeaderSize = 14;
    constexpr quint32 OldHeaderSize = 12;
    constexpr quint32 HeaderSize = 40;
    constexpr quint32 Masks = 3;
    if (bits.size() < qsizetype{HeaderSize}) {
        return {};
    }
    const auto wordAt = [&](qsizetype at) { return qFromLittleEndian<quint16>(bits.data() + at); };
    const auto longAt = [&](qsizetype at) { return qFromLittleEndian<quint32>(bits.data() + at); };
    const quint32 headerSize = longAt(0);
    const bool isOld = headerSize == OldHeaderSize;
    if (!isOld && (headerSize < HeaderSize || headerSize > bits.size())) {
        return {};
    }
    const quint32 depth = wordAt(isOld ? 10 : 14);
    quint32 colors = isOld ? 0 : longAt(32);
    if (colors == 0 && depth <= 8) {
        colors = 1U << depth;
    }
    const quint32 masks = !isOld && headerSize == HeaderSize && longAt(16) == Masks ? 12 : 0;
    const quint32 table = std::min(colors, 256U) * (isOld ? 3 : 4);

    QByteArray file(FileHeaderSize, '\0');
    file.replace(0, 2, "BM");
    const auto put = [&](qsizetype at, quint32 number) {
        qToLittleEndian(number, file.data() + at);
    };
    put(2, static_cast<quint32>(FileHeaderSize + bits.size()));
    put(10, static_cast<quint32>(FileHeaderSize) + headerSize + masks + table);
    file.append(bits);
    return readRaster(file, BitmapLimit, static_cast<int>(BitmapLimit)).image;
}

}  // namespace varo::ui
