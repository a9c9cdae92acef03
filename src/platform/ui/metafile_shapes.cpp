#include "platform/ui/metafile_bitmap.h"
#include "platform/ui/metafile_player.h"

#include <QPainterPath>
#include <QtMath>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace varo::ui {

namespace {

constexpr qsizetype kLongestText = 1024;

// What takes the time of filled pixels, as measured: a pixel of an outline, a pixel that is filled
// with a pattern or scaled, and a byte of a text.
constexpr qreal kWorkOfOutlinePixel = 100;
constexpr qreal kWorkOfPatternPixel = 8;
constexpr qreal kWorkOfTextByte = 10'000;

quint32 operationOf(const MetafileRecord& record) {
    return static_cast<quint32>(record.word(0)) | static_cast<quint32>(record.word(1)) << 16;
}

enum RasterOperation : quint32 {
    Blackness = 0x00000042,
    Whiteness = 0x00FF0062,
    SourceCopy = 0x00CC0020,
    SourceAnd = 0x008800C6,
    SourcePaint = 0x00EE0086,
    SourceInvert = 0x00660046,
    NotSourceCopy = 0x00330008,
    LeaveAlone = 0x00AA0029,
};

QPainter::CompositionMode compositionOf(quint32 operation) {
    switch (operation) {
        case SourceAnd:
            return QPainter::CompositionMode_Multiply;
        case SourcePaint:
            return QPainter::CompositionMode_Lighten;
        case SourceInvert:
            return QPainter::CompositionMode_Difference;
        default:
            return QPainter::CompositionMode_SourceOver;
    }
}

/// Pixels of the outline of a rectangle, or of what fills it; few of those far outside are seen.
qreal outlineOf(const QRectF& rect) {
    constexpr qreal kFarOutside = 10'000;
    return std::min(2 * (rect.width() + rect.height()), kFarOutside);
}

/// Angle of a place seen from the middle of an ellipse, in degrees against the clock.
qreal angleOf(QPointF place, const QRectF& ellipse) {
    const QPointF from = place - ellipse.center();
    return qRadiansToDegrees(std::atan2(-from.y() / std::max(ellipse.height(), 1.0),
                                        from.x() / std::max(ellipse.width(), 1.0)));
}

}  // namespace

// Shapes

/// Lines are as wide as those of a print at least, however small the image is.
void MetafilePlayer::prepareShape(bool filled) {
    constexpr qreal kThinLinesToASide = 800;
    const qreal thin =
        std::max({1.0, size_.width() / kThinLinesToASide, size_.height() / kThinLinesToASide});
    QPen pen = state_.pen;
    pen.setWidthF(std::clamp(pen.widthF() * std::abs(scaleX()), thin, kFarthestPixel));
    painter_.setPen(pen);
    QBrush brush = filled ? state_.brush : QBrush(Qt::NoBrush);
    const bool hatched = brush.style() >= Qt::HorPattern && brush.style() <= Qt::DiagCrossPattern;
    if (hatched) {
        brush.setTransform(QTransform::fromScale(thin, thin));
    }
    painter_.setBrush(brush);
    painter_.setBackground(state_.background);
    painter_.setBackgroundMode(hatched && state_.opaque ? Qt::OpaqueMode : Qt::TransparentMode);
}

/// Pixels of a rectangle that can be seen.
qreal MetafilePlayer::visiblePixels(const QRectF& bounds) const {
    QRectF seen = bounds.intersected(QRectF(QPointF(), size_));
    if (state_.clip) {
        seen = seen.intersected(*state_.clip);
    }
    return std::max(seen.width(), 0.0) * std::max(seen.height(), 0.0);
}

/// Counts the work of a shape with an outline of so many pixels, for which the painter has been
/// prepared.
void MetafilePlayer::countShape(const QRectF& bounds, qreal outline) {
    const Qt::BrushStyle brush = painter_.brush().style();
    if (brush != Qt::NoBrush) {
        work_ += visiblePixels(bounds) * (brush == Qt::SolidPattern ? 1 : kWorkOfPatternPixel);
    }
    if (painter_.pen().style() != Qt::NoPen) {
        work_ += outline * kWorkOfOutlinePixel +
                 std::min(outline * painter_.pen().widthF(), size_.width() * size_.height());
    }
}

/// Draws a shape whose outline leads through the points. The painter takes it at once, and takes
/// minutes over some that no drawing has: those are drawn less finely, with a narrower pen, or not
/// at all.
void MetafilePlayer::drawShape(const QPolygonF& points, bool filled,
                               const std::function<void()>& draw) {
    constexpr qreal kLeastSide = 500;
    constexpr qreal kCrossings = 10000;
    constexpr qreal kFineCrossings = 20;
    constexpr qreal kRoundingLimit = 50000;
    const qreal side = std::max({size_.width(), size_.height(), kLeastSide});
    qreal length = 0;
    for (qsizetype i = 1; i < points.size(); ++i) {
        length += (points[i] - points[i - 1]).manhattanLength();
    }
    if (length > kCrossings * side) {
        return;
    }
    prepareShape(filled);
    QPen pen = painter_.pen();
    const bool fine = length <= kFineCrossings * side;
    // Each point is a corner that the pen goes around.
    const qreal widest = fine ? kRoundingLimit / static_cast<qreal>(points.size()) : 0;
    if (pen.style() != Qt::NoPen && pen.widthF() > widest) {
        pen.setStyle(Qt::SolidLine);
        pen.setWidthF(widest < 1 ? 0 : widest);
        painter_.setPen(pen);
    }
    painter_.setRenderHint(QPainter::Antialiasing, fine);
    countShape(points.boundingRect(), length);
    draw();
    painter_.setRenderHint(QPainter::Antialiasing);
}

void MetafilePlayer::moveTo(Record record) {
    state_.position = QPointF(record.number(1), record.number(0));
}

void MetafilePlayer::lineTo(Record record) {
    const QPointF from = toPixels(state_.position);
    moveTo(record);
    const QPointF to = toPixels(state_.position);
    prepareShape(false);
    countShape({}, std::min((to - from).manhattanLength(), size_.width() + size_.height()));
    painter_.drawLine(from, to);
}

void MetafilePlayer::rectangle(Record record) {
    const QRectF rect = rectAt(record, 0);
    prepareShape(true);
    countShape(rect, outlineOf(rect));
    painter_.drawRect(rect);
}

void MetafilePlayer::roundRectangle(Record record) {
    const QRectF rect = rectAt(record, 2);
    prepareShape(true);
    countShape(rect, outlineOf(rect));
    painter_.drawRoundedRect(rect, std::abs(record.number(1) * scaleX()) / 2,
                             std::abs(record.number(0) * scaleY()) / 2);
}

void MetafilePlayer::ellipse(Record record) {
    const QRectF rect = rectAt(record, 0);
    prepareShape(true);
    countShape(rect, outlineOf(rect));
    painter_.drawEllipse(rect);
}

/// From the first place to the second one, against the clock: an arc, a piece of cake or a part cut
/// off by a line.
void MetafilePlayer::arc(Record record) {
    constexpr int kPie = 0x081A;
    constexpr int kChord = 0x0830;
    constexpr int kUnitsPerDegree = 16;
    const QRectF ellipse = rectAt(record, 4);
    const qreal start = angleOf(pointAt(record, 2), ellipse);
    qreal span = angleOf(pointAt(record, 0), ellipse) - start;
    span = span <= 0 ? span + 360 : span;
    const int from = qRound(start * kUnitsPerDegree);
    const int length = qRound(span * kUnitsPerDegree);
    prepareShape(record.function() == kPie || record.function() == kChord);
    countShape(ellipse, outlineOf(ellipse));
    if (record.function() == kPie) {
        painter_.drawPie(ellipse, from, length);
    } else if (record.function() == kChord) {
        painter_.drawChord(ellipse, from, length);
    } else {
        painter_.drawArc(ellipse, from, length);
    }
}

void MetafilePlayer::pixel(Record record) {
    const QPointF at = pointAt(record, 2) - QPointF(0.5, 0.5);
    const QSizeF size(std::max(1.0, std::abs(scaleX())), std::max(1.0, std::abs(scaleY())));
    painter_.fillRect(QRectF(at, size), record.color(0));
}

void MetafilePlayer::polyline(Record record) {
    const int count = record.word(0);
    if (record.words() < 1 + 2 * count) {
        return;
    }
    const QPolygonF points = pointsAt(record, 1, count);
    drawShape(points, false, [&] { painter_.drawPolyline(points); });
}

void MetafilePlayer::polygon(Record record) {
    const int count = record.word(0);
    if (record.words() < 1 + 2 * count) {
        return;
    }
    const QPolygonF points = pointsAt(record, 1, count);
    drawShape(points, true, [&] { painter_.drawPolygon(points, state_.fillRule); });
}

void MetafilePlayer::polygons(Record record) {
    const int number = record.word(0);
    if (record.words() < 1 + number) {
        return;
    }
    QPainterPath path;
    path.setFillRule(state_.fillRule);
    QPolygonF all;
    int index = 1 + number;
    for (int i = 0; i < number; ++i) {
        const int count = record.word(1 + i);
        if (record.words() < index + 2 * count) {
            return;
        }
        const QPolygonF points = pointsAt(record, index, count);
        path.addPolygon(points);
        path.closeSubpath();
        all += points;
        index += 2 * count;
    }
    drawShape(all, true, [&] { painter_.drawPath(path); });
}

// Texts

/// A text beyond `LongestText` bytes is cut.
void MetafilePlayer::drawText(QByteArrayView bytes, std::vector<qreal> advances, QPointF at) {
    MetafileText text;
    text.bytes = bytes.first(std::min(bytes.size(), kLongestText));
    work_ += static_cast<qreal>(text.bytes.size()) * kWorkOfTextByte;
    text.advances = std::move(advances);
    const bool follows = (state_.align & AlignUpdatesPosition) != 0;
    text.at = toPixels(follows ? state_.position : at);
    text.align = state_.align;
    text.color = state_.textColor;
    if (state_.opaque) {
        text.background = state_.background;
    }
    const qreal length = drawMetafileText(painter_, text, state_.font, std::abs(scaleY()));
    if (follows) {
        state_.position.rx() += length / scaleX();
    }
}

/// The number of bytes, the bytes filled up to words, and the place.
void MetafilePlayer::textOut(Record record) {
    const int length = record.word(0);
    const int place = 1 + (length + 1) / 2;
    if (record.words() >= place + 2) {
        drawText(record.bytesFrom(1).first(length), {},
                 QPointF(record.number(place + 1), record.number(place)));
    }
}

/// The place, the number of bytes, options, a rectangle if they ask for it, the bytes filled up to
/// words, and perhaps the advance of each byte.
void MetafilePlayer::extendedTextOut(Record record) {
    constexpr int kFilled = 2;
    constexpr int kClipped = 4;
    const int length = record.word(2);
    const int options = record.word(3);
    const bool hasRect = (options & (kFilled | kClipped)) != 0;
    const int start = hasRect ? 8 : 4;
    const int end = start + (length + 1) / 2;
    if (record.words() < end) {
        return;
    }
    if ((options & kFilled) != 0) {
        // In this record left and top precede right and bottom.
        const QRectF rect(toPixels(QPointF(record.number(4), record.number(5))),
                          toPixels(QPointF(record.number(6), record.number(7))));
        painter_.fillRect(rect.normalized(), state_.background);
    }
    if (length == 0) {
        return;
    }
    std::vector<qreal> advances;
    if (record.words() >= end + length) {
        for (int i = 0; i < length; ++i) {
            advances.push_back(std::abs(record.number(end + i) * scaleX()));
        }
    }
    drawText(record.bytesFrom(start).first(length), std::move(advances),
             QPointF(record.number(1), record.number(0)));
}

// Bitmaps

void MetafilePlayer::fillPattern(Record record) {
    const QRectF target = extentAt(record, 2);
    work_ += visiblePixels(target) * kWorkOfPatternPixel;
    switch (operationOf(record)) {
        case Blackness:
            painter_.fillRect(target, Qt::black);
            break;
        case Whiteness:
            painter_.fillRect(target, Qt::white);
            break;
        case LeaveAlone:
            break;
        default:
            painter_.fillRect(target, state_.brush);
    }
}

void MetafilePlayer::drawBits(Record record, int bitsIndex, quint32 operation, const QRectF& target,
                              const QRectF& source, bool fromBottom) {
    QImage image = bitmapIn(record.bytesFrom(bitsIndex));
    work_ += static_cast<qreal>(image.sizeInBytes()) + visiblePixels(target) * kWorkOfPatternPixel;
    if (image.isNull() || source.isEmpty() || operation == LeaveAlone) {
        return;
    }
    QRectF part = source;
    if (fromBottom) {
        part.moveTop(image.height() - source.y() - source.height());
    }
    if (operation == NotSourceCopy) {
        image.invertPixels();
    }
    painter_.setCompositionMode(compositionOf(operation));
    painter_.drawImage(target, image, part.intersected(image.rect()));
    painter_.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

void MetafilePlayer::bitBlt(Record record) {
    constexpr int kWithoutBitmap = 9;
    const auto sourceOf = [&](int extent) {
        return QRectF(record.number(3), record.number(2), std::abs(record.number(extent + 1)),
                      std::abs(record.number(extent)));
    };
    if (record.words() > kWithoutBitmap) {
        drawBits(record, 8, operationOf(record), extentAt(record, 4), sourceOf(4), false);
    }
}

void MetafilePlayer::stretchBlt(Record record) {
    const QRectF source(record.number(5), record.number(4), std::abs(record.number(3)),
                        std::abs(record.number(2)));
    drawBits(record, 10, operationOf(record), extentAt(record, 6), source, false);
}

void MetafilePlayer::stretchBits(Record record) {
    const QRectF source(record.number(6), record.number(5), std::abs(record.number(4)),
                        std::abs(record.number(3)));
    drawBits(record, 11, operationOf(record), extentAt(record, 7), source, true);
}

void MetafilePlayer::setBits(Record record) {
    const QRectF source(record.number(4), record.number(3), std::abs(record.number(6)),
                        std::abs(record.number(5)));
    drawBits(record, 9, SourceCopy, extentAt(record, 5), source, true);
}

}  // namespace varo::ui
