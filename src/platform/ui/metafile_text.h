#pragma once

#include <QByteArrayView>
#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPointF>
#include <QString>

#include <optional>
#include <vector>

namespace varo::ui {

/// A font as a metafile describes it.
struct MetafileFont {
    QString family;
    qreal height = 0;  ///< of the letters if negative, of the line if positive, in units
    qreal angle = 0;   ///< of the line, in degrees against the clock
    int weight = QFont::Normal;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    int charset = 0;
};

/// How texts are placed, as bits.
enum MetafileTextAlign {
    AlignUpdatesPosition = 1,
    AlignRight = 2,
    AlignCenter = 6,
    AlignBottom = 8,
    AlignBaseline = 24
};

/// One text of a metafile; places and lengths are in pixels of the image.
struct MetafileText {
    QByteArrayView bytes;
    std::vector<qreal> advances;  ///< of each byte; empty: those of the font
    QPointF at;
    int align = 0;
    QColor color;
    std::optional<QColor> background;
};

/// The name of a font, or another text without a font of its own.
QString metafileName(QByteArrayView bytes);

/// Draws a text. `scale` is the number of pixels to a unit of the font's height. Returns the length
/// of the line in pixels.
qreal drawMetafileText(QPainter& painter, const MetafileText& text, const MetafileFont& font,
                       qreal scale);

}  // namespace varo::ui
