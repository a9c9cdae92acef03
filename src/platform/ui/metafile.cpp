#include "platform/ui/metafile.h"

#include "platform/pictures/picture_format.h"
#include "platform/ui/metafile_player.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace varo::ui {

namespace {

constexpr qsizetype kPlacementSize = 22;
constexpr qsizetype kHeaderSize = 18;
constexpr qsizetype kRecordHeaderSize = 6;
constexpr qreal kPixelsPerInch = 96;

/// A drawing without placement says no unit; its longer side gets this many pixels.
constexpr qreal kUnplacedSide = 640;

constexpr qsizetype kFileLimit = 16 * 1024 * 1024;
constexpr std::size_t kRecordLimit = 200'000;

/// Pixels that a drawing may fill, or what takes as long.
constexpr qreal kWorkLimit = 1e9;

template <typename Number>
Number numberAt(QByteArrayView data, qsizetype at) {
    return qFromLittleEndian<Number>(data.sliced(at, sizeof(Number)).data());
}

bool isPlaced(QByteArrayView data) {
    return pictureFormatOf(data) == PictureFormat::PlacedMetafile;
}

}  // namespace

int MetafileRecord::number(int index) const {
    return numberAt<qint16>(parameters_, 2 * qsizetype{index});
}

QColor MetafileRecord::color(int index) const {
    const int redGreen = word(index);
    return {redGreen & 0xFF, redGreen >> 8, word(index + 1) & 0xFF};
}

bool Metafile::isMetafile(QByteArrayView data) {
    return isPlaced(data) ||
           (data.size() >= kHeaderSize && pictureFormatOf(data) == PictureFormat::Metafile);
}

std::optional<Metafile> Metafile::read(const QByteArray& data) {
    Metafile result;
    result.data_ = data;
    if (data.size() > kFileLimit || !result.readHeader()) {
        return std::nullopt;
    }
    return result;
}

bool Metafile::readHeader() {
    if (!isPlaced(data_)) {
        return readRecords(kHeaderSize) && findWindow();
    }
    if (data_.size() < kPlacementSize + kHeaderSize ||
        !isMetafile(QByteArrayView(data_).sliced(kPlacementSize))) {
        return false;
    }
    const auto left = numberAt<qint16>(data_, 6);
    const auto top = numberAt<qint16>(data_, 8);
    const auto right = numberAt<qint16>(data_, 10);
    const auto bottom = numberAt<qint16>(data_, 12);
    const auto unitsPerInch = numberAt<quint16>(data_, 14);
    if (left == right || top == bottom || unitsPerInch == 0) {
        return false;
    }
    window_ = QRectF(left, top, right - left, bottom - top);
    size_ = QSizeF(std::abs(right - left), std::abs(bottom - top)) * kPixelsPerInch / unitsPerInch;
    return readRecords(kPlacementSize + kHeaderSize);
}

/// Goes from record to record up to the one that ends the drawing. What the header says of their
/// number and sizes is not needed.
bool Metafile::readRecords(qsizetype at) {
    while (at + kRecordHeaderSize <= data_.size()) {
        const qint64 size = 2 * qint64{numberAt<quint32>(data_, at)};
        const int function = numberAt<quint16>(data_, at + 4);
        if (function == 0) {
            return true;
        }
        if (size < kRecordHeaderSize || at + size > data_.size() ||
            records_.size() == kRecordLimit) {
            return false;
        }
        records_.emplace_back(function, QByteArrayView(data_).sliced(at + kRecordHeaderSize,
                                                                     size - kRecordHeaderSize));
        at += size;
    }
    return false;
}

/// Takes what is shown from the first records that set it.
bool Metafile::findWindow() {
    for (const MetafileRecord& record : records_) {
        if (record.words() < 2) {
            continue;
        }
        if (record.function() == SetWindowOrg) {
            window_.moveTopLeft(QPointF(record.number(1), record.number(0)));
        } else if (record.function() == SetWindowExt) {
            window_.setSize(QSizeF(record.number(1), record.number(0)));
            break;
        }
    }
    const QSizeF units(std::abs(window_.width()), std::abs(window_.height()));
    size_ = units.scaled(kUnplacedSide, kUnplacedSide, Qt::KeepAspectRatio);
    return units.width() > 0 && units.height() > 0;
}

QImage Metafile::image(QSize size) const {
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull()) {
        return {};
    }
    image.fill(Qt::white);
    MetafilePlayer player(image, window_);
    for (const MetafileRecord& record : records_) {
        player.play(record);
        if (player.work() > kWorkLimit) {
            return {};
        }
    }
    return image;
}

}  // namespace varo::ui
