#include "platform/ui/picture_box.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QtEndian>

#include <array>
#include <functional>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

/// A picture with some detail: a red left half and a pattern on the right.
QImage sampleImage(QImage::Format format = QImage::Format_RGB32) {
    QImage image(60, 40, QImage::Format_RGB32);
    image.fill(Qt::red);
    for (int pixel = 0; pixel < 1200; ++pixel) {
        image.setPixel(30 + pixel % 30, pixel / 30, qRgb(pixel % 256, pixel / 5, 99));
    }
    return image.convertToFormat(format);
}

QByteArray encoded(
    const QImage& image, const char* format,
    const std::function<void(QImageWriter&)>& prepare = [](QImageWriter&) {}) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, format);
    prepare(writer);
    EXPECT_TRUE(writer.write(image));
    return bytes;
}

constexpr std::array Formats = {"bmp", "jpg", "png"};

/// The memory that Qt grants a picture, before any was loaded.
const int processLimit = QImageReader::allocationLimit();

class PictureBoxTest : public testing::Test {
  protected:
    /// Stores the bytes under a name that says nothing of their format, and loads them.
    bool load(const QByteArray& bytes) {
        QFile file(folder_.filePath(u"1TempPic.bmp"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        return box_.load(file.fileName());
    }

    /// The picture in its own size.
    QImage shown() const { return box_.picture().image(box_.picture().size()); }

    QTemporaryDir folder_;
    PictureBox box_;
};

TEST_F(PictureBoxTest, TellsTheFormatByTheContentWhateverFollowsIt) {
    for (const char* format : Formats) {
        ASSERT_TRUE(load(encoded(sampleImage(), format) + QByteArray(100, 'x'))) << format;
        EXPECT_EQ(box_.picture().size(), QSize(60, 40));
        EXPECT_GT(shown().pixelColor(5, 20).red(), 240);
    }
    for (const auto depth : {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_RGB888}) {
        EXPECT_TRUE(load(encoded(sampleImage(depth), "bmp"))) << depth;
    }
}

TEST_F(PictureBoxTest, MakesColorsBlackThatABmpDoesNotDefine) {
    constexpr qsizetype kColors = 46;
    for (const auto depth : {QImage::Format_Mono, QImage::Format_Indexed8}) {
        QByteArray bmp = encoded(sampleImage(depth), "bmp");
        qToLittleEndian(1, bmp.data() + kColors);
        const QImage image = readRaster(bmp, 10'000, 60).image;
        EXPECT_EQ(image.colorTable().mid(1), QList<QRgb>((1 << image.depth()) - 1, qRgb(0, 0, 0)));
        EXPECT_EQ(readRaster(bmp, 10'000, 30).image,
                  image.scaled(30, 20, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    }
}

TEST_F(PictureBoxTest, RefusesAPictureCutOffAnywhere) {
    for (const char* format : Formats) {
        const QByteArray whole = encoded(sampleImage(), format);
        for (qsizetype size = 0; size < whole.size(); size += size < 100 ? 1 : 13) {
            ASSERT_FALSE(load(whole.left(size))) << format << " cut to " << size;
        }
        for (qsizetype cut = 1; cut <= 20; ++cut) {
            ASSERT_FALSE(load(whole.chopped(cut))) << format << " short of " << cut;
        }
    }
    QByteArray png = encoded(sampleImage(), "png");
    png[33] = '\x7F';  // the size of its second chunk
    EXPECT_FALSE(load(png));
}

TEST_F(PictureBoxTest, RefusesAJpegWhoseOnlyEndIsItsThumbnails) {
    const QByteArray thumbnail = encoded(sampleImage().scaled(8, 8), "jpg");
    QByteArray jpeg = encoded(sampleImage(), "jpg");
    QByteArray segment("\xFF\xE2\0\0", 4);
    segment += thumbnail;
    qToBigEndian(static_cast<quint16>(thumbnail.size() + 2), segment.data() + 2);
    jpeg.insert(2, segment);
    EXPECT_TRUE(load(jpeg));
    EXPECT_FALSE(load(jpeg.chopped(2)));
}

TEST_F(PictureBoxTest, UnpacksNoTextsOfAPng) {
    QImage image = sampleImage();
    image.setText(u"Comment"_s, QString(100'000, u'x'));
    const RasterPicture picture = readRaster(encoded(image, "png"), 10'000, 60);
    EXPECT_EQ(picture.image, image);
    EXPECT_TRUE(picture.image.textKeys().isEmpty());
}

TEST_F(PictureBoxTest, RefusesAJpegOfCountlessScans) {
    QByteArray jpeg = encoded(sampleImage(), "jpg",
                              [](QImageWriter& writer) { writer.setProgressiveScanWrite(true); });
    EXPECT_TRUE(load(jpeg));
    const qsizetype last = jpeg.lastIndexOf("\xFF\xDA");
    jpeg.insert(last, jpeg.sliced(last).chopped(2).repeated(100));
    EXPECT_FALSE(load(jpeg));
}

TEST_F(PictureBoxTest, KeepsItsPictureWhenTheNextIsNoneAndAsksNoReaderOfAnotherFormat) {
    ASSERT_TRUE(load(encoded(sampleImage(), "png")));
    const QImage before = shown();
    static int complaints = 0;
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString&) { ++complaints; });
    EXPECT_FALSE(load("<svg xmlns='http://www.w3.org/2000/svg'><use href='#nowhere'/></svg>"));
    qInstallMessageHandler(nullptr);
    EXPECT_EQ(complaints, 0);
    EXPECT_FALSE(load("no picture"));
    EXPECT_FALSE(load(encoded(sampleImage(), "ppm")));
    EXPECT_FALSE(load("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"));
    EXPECT_FALSE(box_.load(folder_.filePath(u"none"_s)));
    EXPECT_FALSE(box_.load(folder_.path()));
    EXPECT_EQ(shown(), before);
    EXPECT_EQ(QImageReader::allocationLimit(), processLimit);
}

TEST_F(PictureBoxTest, RefusesAPictureOfTooManyPixels) {
    QImage flat(20000, 5001, QImage::Format_Mono);
    flat.fill(0);
    EXPECT_FALSE(load(encoded(flat, "png")));
}

TEST_F(PictureBoxTest, ALargePictureIsReadInFewerPixels) {
    const QByteArray large = encoded(sampleImage().scaled(3000, 2000), "jpg");
    const RasterPicture reduced = readRaster(large, 10'000'000, 1000);
    EXPECT_EQ(reduced.size, QSize(3000, 2000));
    EXPECT_EQ(reduced.image.size(), QSize(1500, 1000));
    EXPECT_EQ(readRaster(large, 10'000'000, 2000).image.size(), QSize(3000, 2000));
    EXPECT_TRUE(readRaster(large, 3000 * 2000 - 1, 1000).image.isNull());
}

TEST_F(PictureBoxTest, TurnsAPictureUpright) {
    ASSERT_TRUE(load(encoded(sampleImage(), "jpg", [](QImageWriter& writer) {
        writer.setTransformation(QImageIOHandler::TransformationRotate90);
    })));
    EXPECT_EQ(box_.picture().size(), QSize(40, 60));
}

TEST_F(PictureBoxTest, ShowsThePictureCentredWithItsProportions) {
    ASSERT_TRUE(load(encoded(sampleImage(), "png")));
    box_.resize(300, 100);
    const QImage shown = box_.grab().toImage();
    // 60 x 40 in 300 x 100 is 150 x 100, with 75 to spare on either side.
    const QColor empty = shown.pixelColor(2, 50);
    EXPECT_EQ(shown.pixelColor(70, 50), empty);
    EXPECT_EQ(shown.pixelColor(80, 50), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(80, 2), QColor(Qt::red));
}

}  // namespace
}  // namespace varo::ui
