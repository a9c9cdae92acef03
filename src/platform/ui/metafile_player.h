#pragma once

#include "platform/ui/metafile.h"
#include "platform/ui/metafile_text.h"

#include <QBrush>
#include <QPainter>
#include <QPen>

#include <functional>
#include <optional>
#include <set>
#include <variant>
#include <vector>

namespace varo::ui {

/// The functions that say which part of the plane is shown.
enum MetafileWindowFunction { SetWindowOrg = 0x020B, SetWindowExt = 0x020C };

/// Draws the records of a metafile on an image, one after the other. A record whose parameters are
/// not all there, or refer to nothing, draws nothing.
class MetafilePlayer {
  public:
    /// `window` is the part of the plane that fills the image, as long as the records set no other;
    /// a negative width or height turns it over.
    MetafilePlayer(QImage& image, const QRectF& window);

    void play(const MetafileRecord& record);

    /// What has been drawn so far, counted in filled pixels: the same for the same records and size
    /// on every machine.
    qreal work() const { return work_; }

  private:
    /// Farthest place that is drawn to, in pixels; beyond it nothing is ever seen.
    static constexpr qreal kFarthestPixel = 32000;

    /// An object that is known by its number; of those that draw nothing only the number counts.
    struct Unused {};
    struct NoObject {};
    using Object = std::variant<NoObject, Unused, QPen, QBrush, MetafileFont>;

    /// What is saved and restored as a whole.
    struct State {
        QRectF window;
        QPen pen{Qt::black};  ///< its width is in units
        QBrush brush{Qt::white};
        MetafileFont font;
        QColor textColor = Qt::black;
        QColor background = Qt::white;
        bool opaque = true;
        Qt::FillRule fillRule = Qt::OddEvenFill;
        int align = 0;
        QPointF position;  ///< in units
        std::optional<QRectF> clip;
    };

    using Record = const MetafileRecord&;
    struct Function;
    static const Function* functionOf(int code);

    void setBackground(Record record);
    void setBackgroundMode(Record record);
    void setFillMode(Record record);
    void setTextColor(Record record);
    void setTextAlign(Record record);
    void setWindowOrg(Record record);
    void setWindowExt(Record record);
    void offsetWindow(Record record);
    void scaleWindow(Record record);
    void save(Record record);
    void restore(Record record);
    void clip(Record record);
    void unclip(Record record);

    void createPen(Record record);
    void createBrush(Record record);
    void createFont(Record record);
    void createPattern(Record record);
    void createUnused(Record record);
    void select(Record record);
    void remove(Record record);
    void add(Object object);

    void moveTo(Record record);
    void lineTo(Record record);
    void rectangle(Record record);
    void roundRectangle(Record record);
    void ellipse(Record record);
    void arc(Record record);
    void pixel(Record record);
    void polyline(Record record);
    void polygon(Record record);
    void polygons(Record record);
    void textOut(Record record);
    void extendedTextOut(Record record);
    void fillPattern(Record record);
    void bitBlt(Record record);
    void stretchBlt(Record record);
    void stretchBits(Record record);
    void setBits(Record record);

    QPointF toPixels(QPointF units) const;
    QPointF pointAt(Record record, int index) const;
    QRectF rectAt(Record record, int index) const;
    QRectF extentAt(Record record, int index) const;
    QPolygonF pointsAt(Record record, int index, int count) const;
    qreal scaleX() const;
    qreal scaleY() const;
    qreal visiblePixels(const QRectF& bounds) const;
    void countShape(const QRectF& bounds, qreal outline);
    void drawShape(const QPolygonF& points, bool filled, const std::function<void()>& draw);
    void prepareShape(bool filled);
    void drawText(QByteArrayView bytes, std::vector<qreal> advances, QPointF at);
    void drawBits(Record record, int bitsIndex, quint32 operation, const QRectF& target,
                  const QRectF& source, bool fromBottom);

    QSizeF size_;
    QPainter painter_;
    State state_;
    std::vector<State> saved_;
    std::vector<Object> objects_;
    std::set<std::size_t> free_;  ///< numbers that objects have had
    qreal work_ = 0;
    qsizetype patternBytes_ = 0;  ///< of all patterns made so far
};

}  // namespace varo::ui
