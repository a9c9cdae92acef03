// Takes the bytes that libFuzzer generates as a picture (bmp, png, jpg, wmf) and as a drawing
// (svg), and reads and draws them as the control and the library tool do.

#include "library/drawing_check.h"
#include "platform/pictures/picture_format.h"
#include "platform/ui/picture.h"
#include "sandbox.h"

#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>

using namespace varo;
using fuzz::require;

namespace {

constexpr qint64 kPixelLimit = 1'000'000;
constexpr int kEnough = 64;

void checkPicture(const QByteArray& bytes) {
    const auto read = [&](qint64 limit) { return ui::Picture::fromBytes(bytes, limit, kEnough); };
    const ui::Picture picture = read(kPixelLimit);
    require(picture.isNull() == read(kPixelLimit).isNull(), "reading again gives the same");
    const bool isDrawing = ui::Metafile::isMetafile(bytes);
    require(isDrawing || ui::Picture::fromBytes(bytes, kPixelLimit, kEnough,
                                                [](qint64 needed) {
                                                    require(needed > 0, "pixels take memory");
                                                    return false;
                                                })
                             .isNull(),
            "without memory there are no pixels");
    if (picture.isNull()) {
        return;
    }
    require(pictureFormatOf(bytes) != PictureFormat::None,
            "what is shown as a picture is stored as one");
    const QSize size = picture.size();
    const qint64 pixels = qint64{size.width()} * size.height();
    require(!size.isEmpty() && (isDrawing || pixels <= kPixelLimit), "a picture keeps the limit");
    require(isDrawing || pixels == 1 || read(pixels - 1).isNull(), "a lower limit refuses it");
    const QSize shown = size.scaled(kEnough, kEnough, Qt::KeepAspectRatio).expandedTo({1, 1});
    const QImage image = picture.image(shown);
    require(image.size() == shown, "a picture is drawn in the size that is wanted");
    require(read(kPixelLimit).image(shown) == image, "drawing again draws the same");
}

void checkDrawing(const QByteArray& bytes) {
    const QString problem = drawingProblem(bytes);
    require(drawingProblem(bytes) == problem, "looking again finds the same");
    if (!problem.isEmpty()) {
        return;
    }
    QSvgRenderer renderer;
    if (!renderer.load(bytes)) {
        return;
    }
    QImage image(kEnough, kEnough, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    renderer.render(&painter);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    static int count = 1;  // libFuzzer's arguments are none of Qt's
    (void)argc;
    static const QGuiApplication application(count, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const QByteArray content(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size));
    if (pictureFormatOf(content) == PictureFormat::None) {
        checkDrawing(content);
    }
    checkPicture(content);
    return 0;
}
