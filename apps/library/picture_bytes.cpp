#include "library/picture_bytes.h"

#include "library/bounded_call.h"
#include "library/drawing_check.h"
#include "library/input_file.h"
#include "platform/pictures/picture_format.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace varo {

namespace {

/// A drawing of the samples takes a hundredth of one second.
constexpr int kMostSeconds = 20;
constexpr int kJpegQuality = 92;
/// Written into the picture's header; fixed, or the screen's resolution would get into the bytes.
constexpr int kDotsPerMeter = 3780;

/// The drawing's pixels on white; null when `drawing` is no SVG drawing.
QImage rendered(const QByteArray& drawing, std::optional<qint32> width,
                std::optional<qint32> height) {
    QSvgRenderer renderer(drawing);
    if (!renderer.isValid()) {
        return {};
    }
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    const QSize own = renderer.defaultSize().boundedTo({kLargestSide, kLargestSide});
    QImage image(width.value_or(std::max(1, own.width())),
                 height.value_or(std::max(1, own.height())), QImage::Format_RGB32);
    image.setDotsPerMeterX(kDotsPerMeter);
    image.setDotsPerMeterY(kDotsPerMeter);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    renderer.render(&painter);
    return image;
}

/// The drawing without the pictures that it holds; "" when it has no texts.
QByteArray textsOf(const QByteArray& drawing) {
    QByteArray texts;
    bool hasText = false;
    QXmlStreamReader from(drawing);
    QXmlStreamWriter to(&texts);
    while (!from.atEnd()) {
        from.readNext();
        if (from.isStartElement() && from.name() == u"image") {
            from.skipCurrentElement();
        } else if (from.tokenType() != QXmlStreamReader::Invalid) {
            hasText = hasText || (from.isStartElement() && from.name().startsWith(u"text"));
            to.writeCurrentToken(from);
        }
    }
    return hasText ? texts : QByteArray();
}

/// The bytes of the rendered drawing, behind kRendered, or the reason why there are none.
constexpr char kRendered = '\0';

/// Checks and renders a drawing, to be run as a bounded call.
QByteArray renderedOrProblem(const QByteArray& drawing, const PictureText& picture) {
    if (const QString problem = drawingProblem(drawing); !problem.isEmpty()) {
        return problem.toUtf8();
    }
    // The fonts are open then.
    if (const QByteArray texts = textsOf(drawing); !texts.isEmpty()) {
        constexpr int kTrialSide = 64;
        rendered(texts, kTrialSide, kTrialSide);
    }
    if (kMemoryIsBounded) {
        openNoMoreFiles();  // the sanitizers open pipes to look at memory
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    buffer.putChar(kRendered);
    if (!rendered(drawing, picture.width, picture.height)
             .save(&buffer, qPrintable(picture.format), kJpegQuality)) {
        return QStringLiteral("the file is no SVG drawing, or cannot be written as %1")
            .arg(picture.format)
            .toUtf8();
    }
    return buffer.data();
}

}  // namespace

QByteArray pictureBytes(const PictureText& picture, const QString& textPath) {
    if (picture.file.isEmpty()) {
        return picture.bytes;
    }
    const auto fail = [&](const QString& message) {
        throw TextError(textPath, picture.at,
                        QStringLiteral("picture \"%1\": ").arg(picture.file) + message);
    };
    QByteArray bytes;
    try {
        bytes = readInputFile(QFileInfo(textPath).absoluteDir().absoluteFilePath(picture.file),
                              kPictureFileLimit);
    } catch (const TextError& error) {
        fail(error.description());
    }
    if (bytes.isEmpty()) {
        fail(QStringLiteral("the file is empty"));
    }
    if (!picture.file.endsWith(u".svg", Qt::CaseInsensitive)) {
        if (!picture.format.isEmpty() || picture.width || picture.height) {
            fail(QStringLiteral("only an .svg drawing takes \"format\", \"width\" and \"height\""));
        }
        if (pictureFormatOf(bytes) == PictureFormat::None) {
            fail(QStringLiteral("the file is no bmp, jpg, png or wmf picture"));
        }
        return bytes;
    }
    if (picture.format.isEmpty()) {
        fail(QStringLiteral("a drawing needs \"format\", \"jpg\" or \"bmp\""));
    }
    for (const auto& side : {picture.width, picture.height}) {
        if (side && (*side < 1 || *side > kLargestSide)) {
            fail(QStringLiteral("a side must have 1 to %1 pixels").arg(kLargestSide));
        }
    }
    QImageReader::supportedImageFormats();  // loads the plug-ins, once for all drawings
    const auto result =
        boundedCall(kMostSeconds, [&] { return renderedOrProblem(bytes, picture); });
    if (!result) {
        fail(QStringLiteral("rendering the drawing takes more than %1 seconds, or all memory")
                 .arg(kMostSeconds));
    }
    if (!result->startsWith(kRendered)) {
        fail(QString::fromUtf8(*result));
    }
    return result->sliced(1);
}

}  // namespace varo
