#include "library/picture_reader.h"

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

QByteArray PictureReader::read(const PictureText& picture) {
    const QByteArray bytes = picture.file.isEmpty() ? picture.bytes : readFile(picture);
    bytes_ += bytes.size();
    if (bytes_ > mostBytes_) {
        throw TextError(textPath_, picture.at,
                        QStringLiteral("with this picture, all pictures of the library have more "
                                       "than %1 MiB")
                            .arg(mostBytes_ >> 20));
    }
    return bytes;
}

QByteArray PictureReader::readFile(const PictureText& picture) {
    const QString path = QFileInfo(textPath_).absoluteDir().absoluteFilePath(picture.file);
    if (picture.file.endsWith(u".svg", Qt::CaseInsensitive)) {
        return render(picture, path);
    }
    const QByteArray bytes = contentOf(picture, path);
    if (!picture.format.isEmpty() || picture.width || picture.height) {
        fail(picture,
             QStringLiteral("only an .svg drawing takes \"format\", \"width\" and \"height\""));
    }
    if (pictureFormatOf(bytes) == PictureFormat::None) {
        fail(picture, QStringLiteral("the file is no bmp, jpg, png or wmf picture"));
    }
    return bytes;
}

QByteArray PictureReader::render(const PictureText& picture, const QString& path) {
    if (picture.format.isEmpty()) {
        fail(picture, QStringLiteral("a drawing needs \"format\", \"jpg\" or \"bmp\""));
    }
    for (const auto& side : {picture.width, picture.height}) {
        if (side && (*side < 1 || *side > kLargestSide)) {
            fail(picture, QStringLiteral("a side must have 1 to %1 pixels").arg(kLargestSide));
        }
    }
    const QString key = QStringLiteral("%1 %2x%3 %4")
                            .arg(picture.format)
                            .arg(picture.width.value_or(0))
                            .arg(picture.height.value_or(0))
                            .arg(QFileInfo(path).canonicalFilePath());
    if (const QByteArray* rendered = rendered_.object(key)) {
        return *rendered;
    }
    if (time_ >= mostTime_) {
        fail(picture, QStringLiteral("rendering the drawings before this one has taken %1 minutes, "
                                     "the most that all drawings of a library may take")
                          .arg(std::chrono::floor<std::chrono::minutes>(mostTime_).count()));
    }
    const QByteArray drawing = contentOf(picture, path);
    QImageReader::supportedImageFormats();  // loads the plug-ins, once for all drawings
    const auto start = std::chrono::steady_clock::now();
    const auto result =
        boundedCall(kMostSeconds, [&] { return renderedOrProblem(drawing, picture); });
    time_ += std::chrono::steady_clock::now() - start;
    if (!result) {
        fail(picture,
             QStringLiteral("rendering the drawing takes more than %1 seconds, or all memory")
                 .arg(kMostSeconds));
    }
    if (!result->startsWith(kRendered)) {
        fail(picture, QString::fromUtf8(*result));
    }
    const QByteArray bytes = result->sliced(1);
    rendered_.insert(key, new QByteArray(bytes), bytes.size());
    return bytes;
}

QByteArray PictureReader::contentOf(const PictureText& picture, const QString& path) const {
    QByteArray bytes;
    try {
        bytes = readInputFile(path, kPictureFileLimit);
    } catch (const TextError& error) {
        fail(picture, error.description());
    }
    if (bytes.isEmpty()) {
        fail(picture, QStringLiteral("the file is empty"));
    }
    return bytes;
}

void PictureReader::fail(const PictureText& picture, const QString& message) const {
    throw TextError(textPath_, picture.at,
                    QStringLiteral("picture \"%1\": ").arg(picture.file) + message);
}

}  // namespace varo
