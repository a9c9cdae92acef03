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

bool isTextChunk(QByteArrayView type) {
    return type == "zTXt" || type == "iTXt" || type == "tEXt";
}

/// The png up to its end, without its texts, which gigabytes may be packed in. Empty unless its
/// chunks lead to a complete IEND chunk.
QByteArray withoutTexts(const QByteArray& png) {
    constexpr qint64 kChunkFrame = 12;
    QByteArray result;
    qint64 kept = 0;  // from where on the chunks are still to be taken over
    qint64 at = kPngSignatureSize;
    while (at + kChunkFrame <= png.size()) {
        const qint64 size = kChunkFrame + bigEndianAt<quint32>(png, at);
        if (at + size > png.size()) {
            break;
        }
        const QByteArrayView type = QByteArrayView(png).sliced(at + 4, 4);
        if (isTextChunk(type)) {
            result.append(QByteArrayView(png).sliced(kept, at - kept));
            kept = at + size;
        }
        at += size;
        if (type == "IEND") {
            return kept == 0 ? png : result.append(QByteArrayView(png).sliced(kept, at - kept));
        }
    }
    return {};
}

/// A jpg is whole when its segments, and the coded data between them, lead to an end-of-image
/// marker. An end marker inside a segment belongs to a thumbnail. Each scan goes through all of the
/// picture, however little it brings: one with more scans than any sensible writer makes is none.
/// Returns the number of scans of a whole one, else 0.
int scansOfWholeJpeg(QByteArrayView data) {
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
            return scans;
        }
        at += 2;
        if (standsAlone(marker)) {
            continue;
        }
        scans += marker == kStartOfScan ? 1 : 0;
        if (at + 2 > data.size() || scans > kScanLimit) {
            return 0;
        }
        at += bigEndianAt<quint16>(data, at);
    }
    return 0;
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

/// Whether a reader makes pixels that name the colours of a table.
bool hasColorTable(const QImageReader& reader) {
    const QImage::Format format = reader.imageFormat();
    return format == QImage::Format_Mono || format == QImage::Format_MonoLSB ||
           format == QImage::Format_Indexed8;
}

/// Most bytes that a reader takes to make an image of `wanted` pixels of a picture of `size`. The
/// readers of a jpg with one scan, and of a png whose rows stand in their order, keep only the rows
/// that they make smaller.
qint64 memoryFor(const QImageReader& reader, QByteArrayView data, QSize size, QSize wanted,
                 int scans) {
    constexpr int kPngInterlace = 28;
    constexpr int kUsualBits = 32;
    constexpr int kCoefficientBits = 48;  // of the three channels of a pixel of a jpg
    const auto bytesOf = [](QSize pixels, int bits) {
        return qint64{pixels.width()} * pixels.height() * bits / 8;
    };
    const QImage::Format format = reader.imageFormat();
    const int bits = format == QImage::Format_Invalid
                         ? kUsualBits
                         : int{QImage::toPixelFormat(format).bitsPerPixel()};
    const qint64 made = bytesOf(wanted, std::max(bits, kUsualBits));
    if (reader.format() == "jpeg") {
        return made + (scans == 1 && wanted != size ? 0 : bytesOf(size, kCoefficientBits));
    }
    const bool isReadByRows = wanted != size && !hasColorTable(reader) &&
                              reader.format() == "png" && data[kPngInterlace] == 0;
    return made + (isReadByRows ? 0 : bytesOf(size, bits));
}

/// Pixels can name colours that the table of their file does not reach; whatever looks them up
/// would take what follows the table in memory. They are black.
void completeColors(QImage& image) {
    if (image.colorCount() > 0) {
        QList<QRgb> colors = image.colorTable();
        colors.resize(qsizetype{1} << image.depth(), qRgb(0, 0, 0));
        image.setColorTable(colors);
    }
}

}  // namespace

RasterPicture readRaster(QByteArray data, qint64 pixelLimit, int enough,
                         const MemoryRequest& memory) {
    if (data.size() > rasterFileLimit(pixelLimit)) {
        return {};
    }
    const QByteArray format = formatOf(data);
    if (format == "png") {
        data = withoutTexts(data);
    }
    const int scans = format == "jpeg" ? scansOfWholeJpeg(data) : 1;
    if (format.isEmpty() || data.isEmpty() || scans == 0) {
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
    const QSize wanted = reduced(size, enough);
    if (memory && !memory(memoryFor(reader, data, size, wanted, scans))) {
        return {};
    }
    const AllocationLimit limit(pixelLimit * kBytesPerPixel);
    const bool isIndexed = hasColorTable(reader);
    if (wanted != size && !isIndexed) {
        reader.setScaledSize(wanted);
    }
    const bool isRotated =
        reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    QImage image;
    if (format == "bmp") {
        // The runs of a compressed one need not reach every pixel, and the reader fills none.
        image = QImage(size, reader.imageFormat());
        image.fill(0);
    }
    if (!reader.read(&image)) {
        return {isRotated ? size.transposed() : size, QImage()};
    }
    completeColors(image);
    if (wanted != size && isIndexed) {
        image = image.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    return {isRotated ? size.transposed() : size, image};
}

qint64 rasterFileLimit(qint64 pixelLimit) {
    return pixelLimit * kBytesPerPixel + kFileOverhead;
}

}  // namespace varo::ui
