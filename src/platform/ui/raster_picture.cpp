#include "platform/ui/raster_picture.h"

#include "platform/pictures/picture_format.h"

#include <QBuffer>
#include <QByteArrayView>
#include <QImageReader>
#include <QMutex>
#include <QtEndian>

#include <algorithm>
#include <limits>

namespace varo::ui {

namespace {

/// Room for the widest pixels a reader makes (four 16-bit channels), and for what a file says
/// besides.
constexpr int kBytesPerPixel = 8;
constexpr qint64 kFileOverhead = 16 * 1024 * 1024;

/// Raises the readers' common limit on memory while one picture is read; pictures may be read in
/// several threads at once.
class AllocationLimit {
  public:
    explicit AllocationLimit(qint64 bytes) {
        const qint64 mebibytes = (bytes >> 20) + 1;
        const QMutexLocker locker(&mutex);
        if (users++ == 0) {
            before = QImageReader::allocationLimit();
        }
        const auto wanted =
            static_cast<int>(std::min<qint64>(mebibytes, std::numeric_limits<int>::max()));
        if (users == 1 || wanted > QImageReader::allocationLimit()) {
            QImageReader::setAllocationLimit(wanted);
        }
    }
    ~AllocationLimit() {
        const QMutexLocker locker(&mutex);
        if (--users == 0) {
            QImageReader::setAllocationLimit(before);
        }
    }
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;

  private:
    static inline QMutex mutex;
    static inline int users = 0;
    static inline int before = 0;  ///< the limit while no picture is read
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

constexpr qsizetype kPngSignatureSize = 8;

/// Qt's name of the format that the content has, empty when it has none of pixels. Asked to find it
/// out, Qt would hand the content to every reader that is installed, and some take all the memory
/// that there is.
QByteArray formatOf(QByteArrayView data) {
    switch (pictureFormatOf(data)) {
        case PictureFormat::Bmp:
            return "bmp";
        case PictureFormat::Jpeg:
            return "jpeg";
        case PictureFormat::Png:
            return "png";
        case PictureFormat::None:
        case PictureFormat::Metafile:
        case PictureFormat::PlacedMetafile:
            break;
    }
    return {};
}

// The readers fill up a picture whose file ends early and call that a success, so the end of the
// picture is looked for in the file itself.

/// The png up to its end, without its texts, which gigabytes may be packed in. Empty unless its
/// chunks lead to a complete IEND chunk.
QByteArray withoutTexts(QByteArrayView png) {
    constexpr qint64 kChunkFrame = 12;
    QByteArray result = png.first(kPngSignatureSize).toByteArray();
    qint64 at = kPngSignatureSize;
    while (at + kChunkFrame <= png.size()) {
        const qint64 size = kChunkFrame + bigEndianAt<quint32>(png, at);
        if (at + size > png.size()) {
            break;
        }
        const QByteArrayView chunk = png.sliced(at, size);
        const QByteArrayView type = chunk.sliced(4, 4);
        if (type != "zTXt" && type != "iTXt" && type != "tEXt") {
            result.append(chunk);
        }
        if (type == "IEND") {
            return result;
        }
        at += size;
    }
    return {};
}

/// A jpg is whole when its segments, and the coded data between them, lead to an end-of-image
/// marker. An end marker inside a segment belongs to a thumbnail. Each scan goes through all of the
/// picture, however little it brings: one with more scans than any sensible writer makes is none.
bool isWholeJpeg(QByteArrayView data) {
    constexpr int kScanLimit = 32;
    constexpr uchar kPrefix = 0xFF;
    constexpr uchar kEndOfImage = 0xD9;
    constexpr uchar kStartOfScan = 0xDA;
    const auto byteAt = [&](qsizetype at) { return static_cast<uchar>(data[at]); };
    const auto standsAlone = [](uchar marker) {
        return marker == 0x00 || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
    };
    int scans = 0;
    qsizetype at = 2;
    while (at + 1 < data.size()) {
        if (byteAt(at) != kPrefix || byteAt(at + 1) == kPrefix) {
            ++at;
            continue;
        }
        const uchar marker = byteAt(at + 1);
        if (marker == kEndOfImage) {
            return true;
        }
        at += 2;
        if (standsAlone(marker)) {
            continue;
        }
        scans += marker == kStartOfScan ? 1 : 0;
        if (at + 2 > data.size() || scans > kScanLimit) {
            return false;
        }
        at += bigEndianAt<quint16>(data, at);
    }
    return false;
}

/// A bmp is whole when it holds all the pixel bytes that its header announces.
bool isWholeBmp(QByteArrayView data, QSize size) {
    constexpr qsizetype kPixelOffset = 10;
    constexpr qsizetype kHeaderSize = 14;
    constexpr qsizetype kBitCount = 28;
    constexpr qsizetype kCompression = 30;
    constexpr qsizetype kPixelBytes = 34;
    constexpr quint32 kOldHeaderSize = 12;
    constexpr qsizetype kOldBitCount = 24;
    if (data.size() < kPixelBytes + 4) {
        return false;
    }
    const qint64 start = littleEndianAt<quint32>(data, kPixelOffset);
    const bool isOld = littleEndianAt<quint32>(data, kHeaderSize) == kOldHeaderSize;
    const quint32 compression = isOld ? 0 : littleEndianAt<quint32>(data, kCompression);
    if (compression == 1 || compression == 2) {
        const qint64 coded = littleEndianAt<quint32>(data, kPixelBytes);
        return coded > 0 && start + coded <= data.size();
    }
    const qint64 rowBits =
        qint64{size.width()} * littleEndianAt<quint16>(data, isOld ? kOldBitCount : kBitCount);
    const qint64 rowBytes = (rowBits + 31) / 32 * 4;
    return start + rowBytes * size.height() <= data.size();
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
    const QByteArray format = formatOf(data);
    if (format == "png") {
        data = withoutTexts(data);
    }
    if (format.isEmpty() || data.isEmpty() || (format == "jpeg" && !isWholeJpeg(data))) {
        return {};
    }
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);

    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = reader.canRead() ? reader.size() : QSize();
    if (size.isEmpty() || qint64{size.width()} * size.height() > pixelLimit ||
        (format == "bmp" && !isWholeBmp(data, size))) {
        return {};
    }
    const AllocationLimit limit(pixelLimit * kBytesPerPixel);
    if (const QSize wanted = reduced(size, enough); wanted != size) {
        reader.setScaledSize(wanted);
    }
    const bool isRotated =
        reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    return {isRotated ? size.transposed() : size, reader.read()};
}

qint64 rasterFileLimit(qint64 pixelLimit) {
    return pixelLimit * kBytesPerPixel + kFileOverhead;
}

}  // namespace varo::ui
