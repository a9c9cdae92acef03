#include "platform/ui/raster_picture.h"

#include <QBuffer>
#include <QByteArrayView>
#include <QImageReader>
#include <QtEndian>

#include <algorithm>
#include <limits>

namespace varo::ui {

namespace {

/// Room for the widest pixels a reader makes (four 16-bit channels), and for what a file says
/// besides.
constexpr int BytesPerPixel = 8;
constexpr qint64 FileOverhead = 16 * 1024 * 1024;

/// Raises the readers' common limit on memory while one picture is read.
class AllocationLimit {
  public:
    explicit AllocationLimit(qint64 bytes) : before_(QImageReader::allocationLimit()) {
        const qint64 mebibytes = (bytes >> 20) + 1;
        QImageReader::setAllocationLimit(
            static_cast<int>(std::min<qint64>(mebibytes, std::numeric_limits<int>::max())));
    }
    ~AllocationLimit() { QImageReader::setAllocationLimit(before_); }
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;

  private:
    const int before_;
};

/// Numbers at a place of the file; the caller has made sure that the file reaches that far.
template <typename Number>
Number bigEndianAt(QByteArrayView data, qsizetype at) {
    return qFromBigEndian<Number>(data.sliced(at, sizeof(Number)).data());
}

template <typename Number>
Number littleEndianAt(QByteArrayView data, qsizetype at) {
    return qFromLittleEndian<Number>(data.sliced(at, sizeof(Number)).data());
}

// The readers fill up a picture whose file ends early and call that a success, so the end of the
// picture is looked for in the file itself.

/// A png is whole when its chunks lead to a complete IEND chunk.
bool isWholePng(QByteArrayView data) {
    constexpr qint64 SignatureSize = 8;
    constexpr qint64 ChunkFrame = 12;
    qint64 at = SignatureSize;
    while (at + ChunkFrame <= data.size()) {
        const qint64 next = at + ChunkFrame + bigEndianAt<quint32>(data, at);
        if (next > data.size()) {
            return false;
        }
        if (data.sliced(at + 4, 4) == "IEND") {
            return true;
        }
        at = next;
    }
    return false;
}

/// A jpg is whole when its segments, and the coded data between them, lead to an end-of-image
/// marker. An end marker inside a segment belongs to a thumbnail.
bool isWholeJpeg(QByteArrayView data) {
    constexpr uchar Prefix = 0xFF;
    constexpr uchar EndOfImage = 0xD9;
    const auto byteAt = [&](qsizetype at) { return static_cast<uchar>(data[at]); };
    const auto standsAlone = [](uchar marker) {
        return marker == 0x00 || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
    };
    qsizetype at = 2;
    while (at + 1 < data.size()) {
        if (byteAt(at) != Prefix || byteAt(at + 1) == Prefix) {
            ++at;
            continue;
        }
        const uchar marker = byteAt(at + 1);
        if (marker == EndOfImage) {
            return true;
        }
        at += 2;
        if (standsAlone(marker)) {
            continue;
        }
        if (at + 2 > data.size()) {
            return false;
        }
        at += bigEndianAt<quint16>(data, at);
    }
    return false;
}

/// A bmp is whole when it holds all the pixel bytes that its header speaks of.
bool isWholeBmp(QByteArrayView data, QSize size) {
    constexpr qsizetype PixelOffset = 10;
    constexpr qsizetype HeaderSize = 14;
    constexpr qsizetype BitCount = 28;
    constexpr qsizetype Compression = 30;
    constexpr qsizetype PixelBytes = 34;
    constexpr quint32 OldHeaderSize = 12;
    constexpr qsizetype OldBitCount = 24;
    if (data.size() < PixelBytes + 4) {
        return false;
    }
    const qint64 start = littleEndianAt<quint32>(data, PixelOffset);
    const bool isOld = littleEndianAt<quint32>(data, HeaderSize) == OldHeaderSize;
    const quint32 compression = isOld ? 0 : littleEndianAt<quint32>(data, Compression);
    if (compression == 1 || compression == 2) {
        const qint64 coded = littleEndianAt<quint32>(data, PixelBytes);
        return coded > 0 && start + coded <= data.size();
    }
    const qint64 rowBits =
        qint64{size.width()} * littleEndianAt<quint16>(data, isOld ? OldBitCount : BitCount);
    const qint64 rowBytes = (rowBits + 31) / 32 * 4;
    return start + rowBytes * size.height() <= data.size();
}

bool isWhole(QByteArrayView data, const QByteArray& format, QSize size) {
    if (format == "png") {
        return isWholePng(data);
    }
    if (format == "jpeg" || format == "jpg") {
        return isWholeJpeg(data);
    }
    return format == "bmp" && isWholeBmp(data, size);
}

/// The size to decode at: halved, which the jpg reader does at next to no cost, while both display
/// and memory are better off with less.
QSize reduced(QSize size, int enough) {
    while (std::max(size.width(), size.height()) / 2 >= enough) {
        size = {std::max(size.width() / 2, 1), std::max(size.height() / 2, 1)};
    }
    return size;
}

}  // namespace

RasterPicture readRaster(QByteArray data, qint64 pixelLimit, int enough) {
    if (data.size() > rasterFileLimit(pixelLimit)) {
        return {};
    }
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);

    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QSize size = reader.canRead() ? reader.size() : QSize();
    if (size.isEmpty() || qint64{size.width()} * size.height() > pixelLimit ||
        !isWhole(data, reader.format(), size)) {
        return {};
    }
    const AllocationLimit limit(pixelLimit * BytesPerPixel);
    if (const QSize wanted = reduced(size, enough); wanted != size) {
        reader.setScaledSize(wanted);
    }
    const bool lies = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    return {lies ? size.transposed() : size, reader.read()};
}

qint64 rasterFileLimit(qint64 pixelLimit) {
    return pixelLimit * BytesPerPixel + FileOverhead;
}

}  // namespace varo::ui
