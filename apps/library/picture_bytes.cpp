#include "library/picture_bytes.h"

#include "library/bounded_call.h"
#include "library/drawing_check.h"
#include "library/input_file.h"
#include "platform/pictures/picture_format.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

namespace varo {

namespace {

/// A drawing of the samples takes a hundredth of one.
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
    if (const QString problem = drawingProblem(bytes); !problem.isEmpty()) {
        fail(problem);
    }
    const auto encoded = boundedCall(kMostSeconds, [&] {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        rendered(bytes, picture.width, picture.height)
            .save(&buffer, qPrintable(picture.format), kJpegQuality);
        return buffer.data();
    });
    if (!encoded) {
        fail(QStringLiteral("rendering the drawing takes more than %1 seconds, or all memory")
                 .arg(kMostSeconds));
    }
    if (encoded->isEmpty()) {
        fail(QStringLiteral("the file is no SVG drawing, or cannot be written as %1")
                 .arg(picture.format));
    }
    return *encoded;
}

}  // namespace varo
