#include "platform/ui/picture.h"
#include "support/printers.h"
#include "support/wmf_builder.h"

#include <QBuffer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

using Wmf = test::WmfBuilder;

constexpr QRect Square(0, 0, 100, 100);

Picture read(const QByteArray& bytes) {
    static const QTemporaryDir folder;
    QFile file(folder.filePath(u"1TempPic.bmp"_s));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    return Picture::read(file.fileName());
}

/// The drawing of 100 units by 100 in as many pixels.
QImage drawn(const Wmf& wmf) {
    return read(wmf.placed(Square, 96)).image({100, 100});
}

int darkPixels(const QImage& image, const QRect& area) {
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            count += qGray(image.pixel(x, y)) < 128 ? 1 : 0;
        }
    }
    return count;
}

TEST(Metafile, SaysItsSizeByItsPlacementOrItsWindow) {
    const Wmf wmf = Wmf().add(Wmf::SetWindowExt, {500, 1000});
    EXPECT_EQ(read(wmf.placed(QRect(-100, 50, 2880, 1440), 1440)).size(), QSize(192, 96));
    EXPECT_EQ(read(wmf.bytes()).size(), QSize(640, 320));
    EXPECT_EQ(read(Wmf().add(Wmf::SetWindowExt, {-1000, 500}).bytes()).size(), QSize(320, 640));
}

TEST(Metafile, DrawsShapesInTheirColorsAndPlaces) {
    const QImage image = drawn(Wmf()
                                   .pen(5, 0)
                                   .add(Wmf::SelectObject, {0})
                                   .brush(255, 0, 0)
                                   .add(Wmf::SelectObject, {1})
                                   .add(Wmf::Rectangle, {40, 40, 10, 10})
                                   .brush(0, 0, 255)
                                   .add(Wmf::SelectObject, {2})
                                   .add(Wmf::Ellipse, {40, 90, 10, 60})
                                   .add(Wmf::Polygon, {3, 10, 60, 40, 60, 10, 90})
                                   .add(Wmf::Pie, {60, 75, 75, 90, 90, 90, 60, 60})
                                   .pen(0, 4)
                                   .add(Wmf::SelectObject, {3})
                                   .add(Wmf::MoveTo, {50, 0})
                                   .add(Wmf::LineTo, {50, 100}));
    EXPECT_EQ(image.pixelColor(25, 25), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(75, 25), QColor(Qt::blue));
    EXPECT_EQ(image.pixelColor(62, 12), QColor(Qt::white)) << "the corner outside the ellipse";
    EXPECT_EQ(image.pixelColor(15, 65), QColor(Qt::blue));
    EXPECT_EQ(image.pixelColor(38, 88), QColor(Qt::white)) << "beyond the polygon";
    EXPECT_EQ(image.pixelColor(80, 70), QColor(Qt::blue)) << "the upper right quarter";
    EXPECT_EQ(image.pixelColor(70, 80), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(50, 50), QColor(Qt::black));
}

TEST(Metafile, FollowsItsWindowItsClippingAndItsSavedStates) {
    const QImage image = drawn(Wmf()
                                   .add(Wmf::SetWindowOrg, {1000, 1000})
                                   .add(Wmf::SetWindowExt, {-1000, 1000})
                                   .brush(0, 128, 0)
                                   .add(Wmf::SelectObject, {0})
                                   .add(Wmf::SaveState, {})
                                   .add(Wmf::IntersectClip, {500, 1500, 1000, 1000})
                                   .add(Wmf::Rectangle, {0, 2000, 1000, 1000})
                                   .add(Wmf::RestoreState, {-1})
                                   .add(Wmf::Rectangle, {100, 2000, 200, 1900}));
    EXPECT_EQ(image.pixelColor(25, 25), QColor(0, 128, 0));
    EXPECT_EQ(image.pixelColor(75, 25), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(25, 75), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(95, 85), QColor(0, 128, 0)) << "no longer clipped";
}

TEST(Metafile, ALineIsVisibleInASmallPictureOfALargeDrawing) {
    const Wmf wmf = Wmf()
                        .pen(0, 0)
                        .add(Wmf::SelectObject, {0})
                        .add(Wmf::MoveTo, {15000, 0})
                        .add(Wmf::LineTo, {15000, 30000});
    const QImage image = read(wmf.placed(QRect(0, 0, 30000, 30000), 3000)).image({60, 60});
    EXPECT_EQ(darkPixels(image, {10, 0, 1, 60}), 1);
}

TEST(Metafile, AnObjectThatIsDeletedWhileSelectedStaysInUseAndItsNumberIsTakenAgain) {
    const QImage image = drawn(Wmf()
                                   .brush(255, 0, 0)
                                   .add(Wmf::SelectObject, {0})
                                   .add(Wmf::DeleteObject, {0})
                                   .font(-20, 134, "Fang")
                                   .add(Wmf::SelectObject, {0})
                                   .add(Wmf::SelectObject, {77})
                                   .add(Wmf::DeleteObject, {0})
                                   .add(Wmf::DeleteObject, {0})
                                   .brush(0, 0, 255)
                                   .add(Wmf::Rectangle, {90, 90, 10, 10})
                                   .add(Wmf::TextOut, {2, 'a' | 'b' << 8, 50, 50}));
    EXPECT_EQ(image.pixelColor(20, 20), QColor(Qt::red));
}

TEST(Metafile, TextsStandWhereTheyBelong) {
    const QByteArray chinese = "\xB3\xA4\xB6\xC8";  // two characters
    const Wmf wmf = Wmf()
                        .font(-20, 134, "\xCB\xCE\xCC\xE5")
                        .add(Wmf::SelectObject, {0})
                        .add(Wmf::SetTextAlign, {24});
    const QImage plain =
        drawn(Wmf(wmf).add(Wmf::TextOut, {4}, chinese + QByteArray("\x50\0\x0A\0", 4)));
    EXPECT_GT(darkPixels(plain, {10, 62, 40, 22}), 60);
    EXPECT_EQ(darkPixels(plain, {52, 0, 48, 100}), 0) << "two characters, not four";
    const QImage wide = drawn(Wmf(wmf).add(Wmf::ExtTextOut, {80, 10, 4, 0},
                                           chinese + QByteArray("\x32\0\0\0\x14\0\0\0", 8)));
    EXPECT_EQ(darkPixels(wide, {32, 50, 27, 50}), 0) << "spaced as the drawing says";
    EXPECT_GT(darkPixels(wide, {60, 62, 20, 22}), 30);
    const QImage greek = drawn(Wmf()
                                   .font(-40, 2, "Symbol")
                                   .add(Wmf::SelectObject, {0})
                                   .add(Wmf::TextOut, {1, 's', 30, 30}));
    const QImage latin = drawn(
        Wmf().font(-40, 0, "").add(Wmf::SelectObject, {0}).add(Wmf::TextOut, {1, 's', 30, 30}));
    EXPECT_NE(greek, latin);
    EXPECT_GT(darkPixels(greek, Square), 50);
}

TEST(Metafile, ABitmapInsideIsDrawn) {
    QImage red(4, 4, QImage::Format_RGB32);
    red.fill(Qt::red);
    QByteArray file;
    QBuffer buffer(&file);
    red.save(&buffer, "bmp");
    const auto with = [](const QByteArray& bits) {
        return drawn(
            Wmf().add(Wmf::StretchBits, {0x20, 0xCC, 0, 4, 4, 0, 0, 50, 50, 25, 25}, bits));
    };
    EXPECT_EQ(with(file.mid(14)).pixelColor(50, 50), QColor(Qt::red));
    for (const qsizetype size : {0, 3, 39, 40, 60}) {
        EXPECT_EQ(with(file.mid(14, size)).pixelColor(50, 50), QColor(Qt::white)) << size;
    }
    QByteArray huge = file.mid(14);
    qToLittleEndian(quint32{20000}, huge.data() + 4);
    qToLittleEndian(quint32{20000}, huge.data() + 8);
    EXPECT_EQ(with(huge).pixelColor(50, 50), QColor(Qt::white));
}

TEST(Metafile, RefusesADrawingCutOffAnywhere) {
    const Wmf wmf = Wmf()
                        .brush(1, 2, 3)
                        .add(Wmf::SetWindowExt, {10, 10})
                        .add(Wmf::Polygon, {3, 1, 1, 2, 2, 3, 3});
    for (const QByteArray& whole : {wmf.bytes(), wmf.placed(Square, 96)}) {
        ASSERT_FALSE(read(whole).isNull());
        for (qsizetype size = 0; size < whole.size(); ++size) {
            ASSERT_TRUE(read(whole.first(size)).isNull()) << size;
        }
    }
}

TEST(Metafile, RefusesSizesThatCannotBe) {
    const Wmf wmf = Wmf().add(Wmf::Rectangle, {9, 9, 1, 1});
    for (const auto& [bounds, unitsPerInch] :
         {std::pair{QRect(-32768, -32768, 65535, 65535), 1}, std::pair{QRect(0, 0, 0, 50), 96},
          std::pair{QRect(0, 0, 50, 0), 96}, std::pair{QRect(0, 0, 50, 50), 0}}) {
        EXPECT_TRUE(read(wmf.placed(bounds, unitsPerInch)).isNull()) << unitsPerInch;
    }
    EXPECT_TRUE(read(wmf.bytes()).isNull()) << "neither placement nor window";
    EXPECT_TRUE(read(Wmf().add(Wmf::SetWindowExt, {0, 100}).bytes()).isNull());
    for (const quint32 size : {0U, 1U, 2U, 8U, 1000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        EXPECT_TRUE(
            read(Wmf().addLying(size, Wmf::Rectangle, {9, 9, 1, 1}).placed(Square, 96)).isNull())
            << size;
    }
    EXPECT_TRUE(read(QByteArray("\xD7\xCD\xC6\x9A", 4) + QByteArray(200, '\0')).isNull());
}

TEST(Metafile, RecordsThatPromiseMoreThanTheyHoldDrawNothing) {
    const QImage image = drawn(Wmf()
                                   .add(Wmf::Polygon, {0xFFFF, 1, 1})
                                   .add(Wmf::Polygon, {})
                                   .add(Wmf::PolyPolygon, {2, 3, 0xFFFF, 1, 1, 2, 2, 3, 3})
                                   .add(Wmf::PolyPolygon, {0xFFFF, 3})
                                   .add(Wmf::TextOut, {0xFFFF, 'a'})
                                   .add(Wmf::ExtTextOut, {1, 1, 0xFFFF, 2, 0})
                                   .add(Wmf::CreateFont, {1, 2, 3})
                                   .add(Wmf::RestoreState, {-1})
                                   .add(Wmf::RestoreState, {-32768})
                                   .add(Wmf::RestoreState, {32767})
                                   .add(Wmf::Rectangle, {50, 50}));
    EXPECT_EQ(darkPixels(image, Square), 0);
}

TEST(Metafile, OutlivesAnyRecordsAndAnyDamage) {
    QRandomGenerator random(7);
    const auto below = [&](int limit) { return random.bounded(limit); };
    for (int round = 0; round < 60; ++round) {
        Wmf wmf;
        // One function in a hundred is known, the others are passed over.
        for (int i = 0; i < 6000; ++i) {
            const int kind = below(3);
            const int first = below(kind == 0 ? 0x10000 : 5);
            QByteArray rest(2 * below(40), '\0');
            for (char& byte : rest) {
                byte = static_cast<char>(below(kind == 1 ? 3 : 256));
            }
            wmf.add(below(0x1000), {first}, rest);
        }
        QByteArray bytes = wmf.placed(Square, 96);
        read(bytes);
        for (int i = 0; i < 5; ++i) {
            bytes[below(2000)] = static_cast<char>(below(256));
        }
        read(bytes);
    }
}

TEST(Metafile, EndlessDrawingsAreRefusedAndTangledOnesDrawn) {
    Wmf ellipses;
    for (int i = 0; i < 150'000; ++i) {
        ellipses.add(Wmf::Ellipse, {100, 100, 0, 0});
    }
    EXPECT_TRUE(read(ellipses.placed(Square, 1)).isNull());

    QRandomGenerator random(5);
    QByteArray points(4 * 30000, '\0');
    std::generate(points.begin(), points.end(), [&] { return static_cast<char>(random()); });
    const QRect plane(-32768, -32768, 65535, 65535);
    const Wmf tangle = Wmf()
                           .add(Wmf::Polygon, {30000}, points)
                           .add(Wmf::PolyPolygon, {3, 10000, 10000, 10000}, points);
    EXPECT_FALSE(read(tangle.placed(plane, 9000)).image({1500, 1500}).isNull());

    QByteArray zigzag(4 * 2000, '\0');
    for (int i = 0; i < 2000; ++i) {
        zigzag[4 * i] = static_cast<char>(i % 250);
        zigzag[4 * i + 2] = static_cast<char>(i % 2);
    }
    const Wmf wide = Wmf()
                         .pen(0, 1000)
                         .add(Wmf::SelectObject, {0})
                         .add(Wmf::Polyline, {2000}, zigzag)
                         .pen(2, 1000)
                         .add(Wmf::SelectObject, {1})
                         .add(Wmf::Polyline, {2000}, zigzag);
    const Picture strokes = read(wide.placed(QRect(0, 0, 1000, 1000), 96));
    EXPECT_EQ(strokes.image({1000, 1000}).pixelColor(125, 5), QColor(Qt::black));
}

TEST(Metafile, OfAHeapOfHugeLettersTheFirstAreDrawn) {
    const auto darknessOf = [](int height) {
        const QByteArray text = QByteArray(200, ' ') + QByteArray(824, 'W');
        const QByteArray advances(2 * text.size(), '\0');
        const Wmf heap = Wmf()
                             .font(-height, 0, "Sans")
                             .add(Wmf::SelectObject, {0})
                             .add(Wmf::SetTextAlign, {24})
                             .add(Wmf::ExtTextOut, {100, -height / 5, 1024, 0}, text + advances);
        return darkPixels(drawn(heap), Square);
    };
    EXPECT_GT(darknessOf(100), 100);
    EXPECT_EQ(darknessOf(1000), 0);
}

TEST(Metafile, ADrawingThatTakesTooLongInItsSizeIsShownAllTheSame) {
    Wmf ellipses;
    for (int i = 0; i < 500; ++i) {
        ellipses.add(Wmf::Ellipse, {100, 100, 0, 0});
    }
    EXPECT_FALSE(read(ellipses.placed(Square, 96)).image({4500, 4500}).isNull());
}

TEST(Metafile, PatternsBeyondAllMeasureAreNotKept) {
    constexpr int kSide = 4000;
    const QByteArray row = QByteArray("\xFA\0", 2).repeated(kSide / 0xFA) + QByteArray(2, '\0');
    const QByteArray rows = row.repeated(kSide) + QByteArray("\0\1", 2);
    QByteArray bitmap;
    for (const int number :
         {40, kSide, kSide, 1 | 8 << 16, 1, static_cast<int>(rows.size()), 0, 0, 1, 0, 0}) {
        bitmap.resize(bitmap.size() + 4);
        qToLittleEndian(number, bitmap.end() - 4);
    }
    bitmap += rows;

    Wmf wmf = Wmf().pen(5, 0).add(Wmf::SelectObject, {0});
    for (int i = 0; i < 6; ++i) {
        wmf.add(Wmf::CreatePattern, {5, 0}, bitmap);
    }
    const QImage image = drawn(wmf.add(Wmf::SelectObject, {1})
                                   .add(Wmf::Rectangle, {100, 50, 0, 0})
                                   .add(Wmf::SelectObject, {6})
                                   .add(Wmf::Rectangle, {100, 100, 0, 50}));
    EXPECT_EQ(image.pixelColor(25, 50), QColor(Qt::black));
    EXPECT_EQ(image.pixelColor(75, 50), QColor(Qt::white));
}

}  // namespace
}  // namespace varo::ui
