#include "platform/ui/metafile_player.h"

#include "platform/ui/metafile_bitmap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace varo::ui {

namespace {

constexpr std::size_t kSavedLimit = 256;
constexpr std::size_t kObjectLimit = 65536;

/// Bytes that all patterns of a drawing may take, those deleted too: a saved state may have them
/// still.
constexpr qsizetype kPatternLimit = 64 * 1024 * 1024;

}  // namespace

struct MetafilePlayer::Function {
    int code;
    int words;  ///< at least
    void (MetafilePlayer::*play)(Record);
};

const MetafilePlayer::Function* MetafilePlayer::functionOf(int code) {
    using Player = MetafilePlayer;
    static constexpr std::array kFunctions = {
        Function{0x001E, 0, &Player::save},
        Function{0x00F7, 0, &Player::createUnused},  // a palette
        Function{0x0102, 1, &Player::setBackgroundMode},
        Function{0x0106, 1, &Player::setFillMode},
        Function{0x0127, 1, &Player::restore},
        Function{0x012C, 1, &Player::unclip},
        Function{0x012D, 1, &Player::select},
        Function{0x012E, 1, &Player::setTextAlign},
        Function{0x0142, 2, &Player::createPattern},
        Function{0x01F0, 1, &Player::remove},
        Function{0x01F9, 0, &Player::createUnused},  // a pattern in the pixels of a device
        Function{0x0201, 2, &Player::setBackground},
        Function{0x0209, 2, &Player::setTextColor},
        Function{SetWindowOrg, 2, &Player::setWindowOrg},
        Function{SetWindowExt, 2, &Player::setWindowExt},
        Function{0x020F, 2, &Player::offsetWindow},
        Function{0x0213, 2, &Player::lineTo},
        Function{0x0214, 2, &Player::moveTo},
        Function{0x02FA, 5, &Player::createPen},
        Function{0x02FB, 9, &Player::createFont},
        Function{0x02FC, 4, &Player::createBrush},
        Function{0x0324, 1, &Player::polygon},
        Function{0x0325, 1, &Player::polyline},
        Function{0x0410, 4, &Player::scaleWindow},
        Function{0x0416, 4, &Player::clip},
        Function{0x0418, 4, &Player::ellipse},
        Function{0x041B, 4, &Player::rectangle},
        Function{0x041F, 4, &Player::pixel},
        Function{0x0521, 1, &Player::textOut},
        Function{0x0538, 1, &Player::polygons},
        Function{0x061C, 6, &Player::roundRectangle},
        Function{0x061D, 6, &Player::fillPattern},
        Function{0x06FF, 0, &Player::createUnused},  // a region
        Function{0x0817, 8, &Player::arc},
        Function{0x081A, 8, &Player::arc},
        Function{0x0830, 8, &Player::arc},
        Function{0x0940, 8, &Player::bitBlt},
        Function{0x0A32, 4, &Player::extendedTextOut},
        Function{0x0B41, 10, &Player::stretchBlt},
        Function{0x0D33, 9, &Player::setBits},
        Function{0x0F43, 11, &Player::stretchBits},
    };
    const auto* found = std::find_if(kFunctions.begin(), kFunctions.end(),
                                     [code](const Function& each) { return each.code == code; });
    return found == kFunctions.end() ? nullptr : found;
}

MetafilePlayer::MetafilePlayer(QImage& image, const QRectF& window)
    : size_(image.size()), painter_(&image) {
    painter_.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    state_.window = window;
}

void MetafilePlayer::play(const MetafileRecord& record) {
    constexpr int kWorkOfRecord = 2000;
    work_ += kWorkOfRecord;
    const Function* function = functionOf(record.function());
    if (function != nullptr && record.words() >= function->words) {
        (this->*function->play)(record);
    }
}

// Places and lengths

qreal MetafilePlayer::scaleX() const {
    return size_.width() / state_.window.width();
}

qreal MetafilePlayer::scaleY() const {
    return size_.height() / state_.window.height();
}

/// In the middle of a pixel, so that level and upright lines are sharp.
QPointF MetafilePlayer::toPixels(QPointF units) const {
    const auto pixel = [](qreal place) {
        return std::clamp(std::floor(place), -kFarthestPixel, kFarthestPixel) + 0.5;
    };
    const QPointF from = units - state_.window.topLeft();
    return {pixel(from.x() * scaleX()), pixel(from.y() * scaleY())};
}

/// The last parameter comes first, so that y comes before x, and right and bottom before left and
/// top.
QPointF MetafilePlayer::pointAt(Record record, int index) const {
    return toPixels(QPointF(record.number(index + 1), record.number(index)));
}

QRectF MetafilePlayer::rectAt(Record record, int index) const {
    return QRectF(pointAt(record, index + 2), pointAt(record, index)).normalized();
}

QRectF MetafilePlayer::extentAt(Record record, int index) const {
    const QPointF extent(record.number(index + 1), record.number(index));
    const QPointF origin(record.number(index + 3), record.number(index + 2));
    return QRectF(toPixels(origin), toPixels(origin + extent)).normalized();
}

/// Points of a list have x before y.
QPolygonF MetafilePlayer::pointsAt(Record record, int index, int count) const {
    QPolygonF points;
    points.reserve(count);
    for (int i = index; i < index + 2 * count; i += 2) {
        points.append(toPixels(QPointF(record.number(i), record.number(i + 1))));
    }
    return points;
}

void MetafilePlayer::setWindowOrg(Record record) {
    state_.window.moveTo(record.number(1), record.number(0));
}

void MetafilePlayer::setWindowExt(Record record) {
    if (record.number(0) != 0 && record.number(1) != 0) {
        state_.window.setSize(QSizeF(record.number(1), record.number(0)));
    }
}

void MetafilePlayer::offsetWindow(Record record) {
    state_.window.translate(record.number(1), record.number(0));
}

void MetafilePlayer::scaleWindow(Record record) {
    const qreal height = state_.window.height() * record.number(1) / record.number(0);
    const qreal width = state_.window.width() * record.number(3) / record.number(2);
    const auto isUsable = [](qreal length) {
        return std::isfinite(length) && std::abs(length) >= 1 && std::abs(length) < 1e9;
    };
    if (isUsable(width) && isUsable(height)) {
        state_.window.setSize(QSizeF(width, height));
    }
}

// State

void MetafilePlayer::setBackground(Record record) {
    state_.background = record.color(0);
}

void MetafilePlayer::setBackgroundMode(Record record) {
    state_.opaque = record.word(0) != 1;
}

void MetafilePlayer::setFillMode(Record record) {
    state_.fillRule = record.word(0) == 2 ? Qt::WindingFill : Qt::OddEvenFill;
}

void MetafilePlayer::setTextColor(Record record) {
    state_.textColor = record.color(0);
}

void MetafilePlayer::setTextAlign(Record record) {
    state_.align = record.word(0);
}

void MetafilePlayer::save(Record) {
    if (saved_.size() < kSavedLimit) {
        saved_.push_back(state_);
    }
}

/// A negative number counts back from the state saved last, a positive one from the first.
void MetafilePlayer::restore(Record record) {
    const int number = record.number(0);
    const int level = number < 0 ? static_cast<int>(saved_.size()) + number : number - 1;
    if (level < 0 || level >= static_cast<int>(saved_.size())) {
        return;
    }
    state_ = saved_[static_cast<std::size_t>(level)];
    saved_.resize(static_cast<std::size_t>(level));
    painter_.setClipRect(state_.clip.value_or(QRectF()),
                         state_.clip ? Qt::ReplaceClip : Qt::NoClip);
}

void MetafilePlayer::clip(Record record) {
    const QRectF rect = rectAt(record, 0);
    state_.clip = state_.clip ? state_.clip->intersected(rect) : rect;
    painter_.setClipRect(*state_.clip);
}

/// Regions are not kept: what they would leave out is drawn.
void MetafilePlayer::unclip(Record) {
    state_.clip.reset();
    painter_.setClipping(false);
}

// Objects

/// Every new object gets the lowest number that is free.
void MetafilePlayer::add(Object object) {
    if (!free_.empty()) {
        objects_[*free_.begin()] = std::move(object);
        free_.erase(free_.begin());
    } else if (objects_.size() < kObjectLimit) {
        objects_.push_back(std::move(object));
    }
}

void MetafilePlayer::createPen(Record record) {
    constexpr std::array kStyles = {Qt::SolidLine,   Qt::DashLine,       Qt::DotLine,
                                    Qt::DashDotLine, Qt::DashDotDotLine, Qt::NoPen};
    const auto style = static_cast<std::size_t>(record.word(0) & 0xF);
    add(QPen(record.color(3), std::abs(record.number(1)),
             style < kStyles.size() ? kStyles[style] : Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

void MetafilePlayer::createBrush(Record record) {
    constexpr int kHatched = 2;
    constexpr std::array kHatches = {Qt::HorPattern,   Qt::VerPattern,   Qt::FDiagPattern,
                                     Qt::BDiagPattern, Qt::CrossPattern, Qt::DiagCrossPattern};
    const auto hatch = static_cast<std::size_t>(record.word(3));
    const int style = record.word(0);
    if (style == kHatched && hatch < kHatches.size()) {
        add(QBrush(record.color(1), kHatches[hatch]));
    } else {
        add(style == 0 ? QBrush(record.color(1)) : QBrush(Qt::NoBrush));
    }
}

void MetafilePlayer::createFont(Record record) {
    MetafileFont font;
    font.height = record.number(0);
    font.angle = record.number(2) / 10.0;
    font.weight = record.word(4) == 0 ? int{QFont::Normal} : record.word(4);
    font.italic = (record.word(5) & 0xFF) != 0;
    font.underline = record.word(5) >> 8 != 0;
    font.strikeOut = (record.word(6) & 0xFF) != 0;
    font.charset = record.word(6) >> 8;
    font.family = metafileName(record.bytesFrom(9));
    add(font);
}

void MetafilePlayer::createPattern(Record record) {
    const QImage pattern = patternBytes_ < kPatternLimit ? bitmapIn(record.bytesFrom(2)) : QImage();
    patternBytes_ += pattern.sizeInBytes();
    work_ += static_cast<qreal>(pattern.sizeInBytes());
    add(pattern.isNull() ? QBrush(Qt::NoBrush) : QBrush(pattern));
}

void MetafilePlayer::createUnused(Record) {
    add(Unused());
}

void MetafilePlayer::select(Record record) {
    const auto number = static_cast<std::size_t>(record.word(0));
    if (number >= objects_.size()) {
        return;
    }
    const Object& object = objects_[number];
    if (const auto* pen = std::get_if<QPen>(&object)) {
        state_.pen = *pen;
    } else if (const auto* brush = std::get_if<QBrush>(&object)) {
        state_.brush = *brush;
    } else if (const auto* font = std::get_if<MetafileFont>(&object)) {
        state_.font = *font;
    }
}

void MetafilePlayer::remove(Record record) {
    const auto number = static_cast<std::size_t>(record.word(0));
    if (number < objects_.size()) {
        objects_[number] = NoObject();
        free_.insert(number);
    }
}

}  // namespace varo::ui
