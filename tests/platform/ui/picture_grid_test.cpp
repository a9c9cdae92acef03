#include "platform/ui/picture_grid.h"

#include "platform/ui/picture.h"
#include "platform/ui/shown_text.h"
#include "support/wmf_builder.h"

#include <QBuffer>
#include <QImageWriter>
#include <QProcess>
#include <QScrollBar>
#include <QStringListModel>
#include <QTest>

#include <gtest/gtest.h>
#include <numeric>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

QByteArray pictureOf(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(image.save(&buffer, "png"));
    return bytes;
}

/// Pictures that are all alike, but for some; handed out in two parts.
class Album : public PictureBytes {
  public:
    explicit Album(QSize size = {300, 200}) : bytes_(pictureOf(size)) {}
    explicit Album(const QByteArray& bytes) : bytes_(bytes) {}

    Read readBytes(int picture, QByteArray& bytes) override {
        if (picture == missing) {
            return Read::None;
        }
        if (picture == locked) {
            ++refused;
            return Read::Later;
        }
        const QByteArray& wanted = picture == broken ? brokenBytes_ : bytes_;
        if (bytes.isEmpty()) {
            bytes = wanted.first(wanted.size() / 2);
            return Read::Part;
        }
        bytes += wanted.sliced(bytes.size());
        read.append(picture);
        return Read::All;
    }
    void endReading() override { ++abandoned; }

    int missing = -1;
    int locked = -1;
    int refused = 0;
    int broken = -1;
    QList<int> read;  ///< whole, in this order
    int abandoned = 0;

  private:
    QByteArray bytes_;
    const QByteArray brokenBytes_ = bytes_.first(bytes_.size() - 20);
};

class PictureGridTest : public testing::Test {
  protected:
    void show(Album& album, int count, QSize size = {520, 400}) {
        QStringList names;
        for (int i = 0; i < count; ++i) {
            names.append(u"图%1"_s.arg(i));
        }
        model.setStringList(names);
        grid = std::make_unique<PictureGrid>();
        grid->setPictures(&model, &album);
        grid->resize(size);
        grid->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(grid.get()));
    }
    bool becomes(int row, PictureGrid::State state) {
        return QTest::qWaitFor([&] { return grid->stateOf(row) == state; });
    }
    QPoint middleOf(int row) { return grid->visualRect(model.index(row, 0)).center(); }
    void turnWheel(int steps, Qt::KeyboardModifiers modifiers) {
        QWheelEvent turn({9, 9}, {9, 9}, {}, {0, 120 * steps}, {}, modifiers, {}, false);
        QCoreApplication::sendEvent(grid->viewport(), &turn);
    }

    QStringListModel model;
    std::unique_ptr<PictureGrid> grid;
};

TEST_F(PictureGridTest, ReadsWhatCanBeSeenAndALittleMore) {
    Album album;
    show(album, 5000);
    EXPECT_EQ(grid->stateOf(0), PictureGrid::State::Waiting);
    EXPECT_TRUE(becomes(8, PictureGrid::State::Shown));
    QTest::qWait(20);
    EXPECT_EQ(album.read.first(), 0);
    EXPECT_LT(album.read.size(), 20);
    QTest::keyClick(grid.get(), Qt::Key_End);
    EXPECT_TRUE(becomes(4999, PictureGrid::State::Shown));
    QTest::qWait(20);
    EXPECT_LT(album.read.size(), 45);
    EXPECT_EQ(album.read.count(2500), 0);
    model.setStringList({u"另一幅"_s});
    EXPECT_EQ(grid->stateOf(0), PictureGrid::State::Waiting) << "the pictures are other ones";
    EXPECT_TRUE(becomes(0, PictureGrid::State::Shown));
}

TEST_F(PictureGridTest, MarksWhatCannotBeRead) {
    Album album;
    album.missing = 1;
    album.broken = 2;
    show(album, 4);
    const auto cell = [&](int row) {
        return grid->viewport()
            ->grab(QRect(middleOf(row) - QPoint(30, 40), QSize(60, 60)))
            .toImage();
    };
    EXPECT_TRUE(becomes(3, PictureGrid::State::Shown));
    EXPECT_TRUE(becomes(2, PictureGrid::State::Unreadable));
    EXPECT_EQ(grid->stateOf(1), PictureGrid::State::Unreadable);
    EXPECT_EQ(cell(1), cell(2));
    EXPECT_NE(cell(2), cell(3));
    EXPECT_EQ(cell(3).pixelColor(30, 30), QColor(Qt::darkGreen));
    EXPECT_EQ(album.read.count(2), 1) << "not read again and again";
}

TEST_F(PictureGridTest, TriesALockedPictureAgainAsLongAsItIsSeen) {
    Album album;
    album.locked = 1;
    show(album, 1000);
    EXPECT_TRUE(becomes(3, PictureGrid::State::Shown));
    EXPECT_TRUE(QTest::qWaitFor([&] { return album.refused > 2; }));
    EXPECT_EQ(grid->stateOf(1), PictureGrid::State::Waiting);
    QTest::qWait(200);
    EXPECT_LT(album.refused, 8) << "after pauses";
    album.locked = -1;
    EXPECT_TRUE(becomes(1, PictureGrid::State::Shown));
    album.locked = 999;
    QTest::keyClick(grid.get(), Qt::Key_End);
    EXPECT_TRUE(QTest::qWaitFor([&] { return album.refused > 3; }));
    QTest::keyClick(grid.get(), Qt::Key_Home);
    QTest::qWait(50);
    album.refused = 0;
    QTest::qWait(400);
    EXPECT_EQ(album.refused, 0) << "no longer seen";
}

TEST_F(PictureGridTest, ClicksAndKeysChooseAndZoom) {
    Album album;
    show(album, 40);
    QList<int> clicked;
    QObject::connect(grid.get(), &PictureGrid::pictureClicked, grid.get(),
                     [&](int row) { clicked.append(row); });
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, middleOf(1));
    QTest::keyClick(grid.get(), Qt::Key_Right);
    QTest::keyClick(grid.get(), Qt::Key_Return);
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {},
                      grid->viewport()->rect().topRight() + QPoint(-3, 3));
    EXPECT_EQ(clicked, (QList{1, 2}));

    const int side = grid->side();
    turnWheel(1, Qt::ControlModifier);
    EXPECT_GT(grid->side(), side);
    QTest::keyClick(grid.get(), Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(grid->side(), side);
    turnWheel(-99, Qt::ControlModifier);
    EXPECT_LT(grid->side(), side);
    EXPECT_TRUE(becomes(30, PictureGrid::State::Shown)) << "more can be seen";
    QTest::keyClick(grid.get(), Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(grid->side(), side);
    EXPECT_TRUE(grid->viewport()->rect().contains(middleOf(2))) << "the chosen one stays in sight";
    const int top = grid->verticalScrollBar()->value();
    turnWheel(-1, {});
    EXPECT_GT(grid->verticalScrollBar()->value(), top);
    EXPECT_EQ(grid->side(), side);
}

TEST_F(PictureGridTest, CanBeDestroyedAndReleasedWhileItReads) {
    auto album = std::make_unique<Album>(QSize(3000, 2000));
    for (const bool isReleased : {false, true}) {
        show(*album, 50);
        album->read.clear();
        EXPECT_TRUE(QTest::qWaitFor([&] { return album->read.size() > 0; }));
        if (isReleased) {
            grid->release();
        } else {
            grid.reset();
        }
    }
    album.reset();
    QTest::qWait(50);
    EXPECT_EQ(grid->stateOf(0), PictureGrid::State::Waiting);
}

TEST(ThumbnailLoader, MakesImagesForTheDevicesPixelsAndEnlargesNone) {
    const struct {
        QSize picture;
        int side;
        qreal ratio;
        QSize image;
    } cases[] = {
        {{300, 200}, 144, 1, {144, 96}},    {{300, 200}, 144, 2, {288, 192}},
        {{200, 300}, 100, 1.5, {100, 150}}, {{30, 20}, 144, 2, {60, 40}},
        {{2000, 1}, 100, 1, {100, 1}},      {{300, 300}, 145, 1.25, {181, 181}},
    };
    for (const auto& each : cases) {
        Album album(each.picture);
        ThumbnailLoader loader;
        loader.setSource(&album);
        loader.want({3}, each.side, each.ratio);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !loader.image(3).isNull(); }));
        EXPECT_EQ(loader.image(3).size(), each.image);
        EXPECT_EQ(loader.image(3).devicePixelRatio(), each.ratio);
    }
}

TEST(ThumbnailLoader, ReadsNoFurtherWhatIsNotWantedAndKeepsABoundedCache) {
    Album album(QSize(400, 400));
    ThumbnailLoader loader;
    loader.setSource(&album);
    constexpr int kCount = 300;
    std::vector<int> all(kCount);
    std::iota(all.begin(), all.end(), 0);
    const auto keptBytes = [&] {
        qint64 bytes = 0;
        for (const int picture : all) {
            bytes += loader.image(picture).sizeInBytes();
        }
        return bytes;
    };
    loader.want({0}, 400, 1);
    QCoreApplication::processEvents();
    loader.want({kCount - 1}, 400, 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !loader.image(kCount - 1).isNull(); }));
    EXPECT_EQ(album.abandoned, 1);
    EXPECT_EQ(album.read.count(0), 0);
    loader.want(all, 400, 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return keptBytes() > ThumbnailLoader::kCacheBytes * 9 / 10; },
                                20'000));
    QTest::qWait(30);
    EXPECT_LE(keptBytes(), ThumbnailLoader::kCacheBytes);
    EXPECT_LT(album.read.size(), 120) << "those that do not fit are not read in turn for ever";
}

/// A small progressive jpg that says it had 9000 rows and columns: its reader makes them, all grey.
QByteArray hugeJpeg() {
    QImage image(64, 64, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setProgressiveScanWrite(true);
    EXPECT_TRUE(writer.write(image));
    const qsizetype frame = bytes.indexOf("\xFF\xC2");
    EXPECT_GT(frame, 0);
    const QByteArray side("\x23\x28", 2);
    return bytes.replace(frame + 5, 4, side + side);
}

TEST(ThumbnailLoader, RefusesAPictureThatTakesTooMuchMemory) {
    Album album(hugeJpeg());
    ThumbnailLoader loader;
    loader.setSource(&album);
    loader.want({1}, 100, 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return loader.isUnreadable(1); }));
}

TEST(Picture, AsksForTheMemoryThatItsReaderTakes) {
    const auto asked = [](const char* format, bool isProgressive, int enough) {
        QImage image(400, 400, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, format);
        writer.setProgressiveScanWrite(isProgressive);
        EXPECT_TRUE(writer.write(image));
        qint64 needed = 0;
        EXPECT_TRUE(Picture::fromBytes(bytes, Picture::kPixelLimit, enough, [&](qint64 memory) {
                        needed = memory;
                        return false;
                    }).isNull());
        return needed;
    };
    constexpr qint64 kWhole = 400 * 400 * 4;
    constexpr qint64 kSmall = 100 * 100 * 4;
    const struct {
        const char* format;
        bool isProgressive;
        int enough;
        qint64 bytes;
    } cases[] = {
        {"png", false, 100, kSmall},
        {"png", false, 400, 2 * kWhole},
        {"bmp", false, 100, kWhole + kSmall},
        {"jpeg", false, 100, kSmall},
        {"jpeg", true, 100, kWhole * 6 / 4 + kSmall},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(asked(each.format, each.isProgressive, each.enough), each.bytes) << each.format;
    }
    const test::WmfBuilder drawing = test::WmfBuilder().add(test::WmfBuilder::SetWindowExt, {9, 9});
    const auto refuse = [](qint64 memory) { return memory < 64 * 1024 * 1024; };
    EXPECT_TRUE(Picture::fromBytes(drawing.bytes(), Picture::kPixelLimit, 9, refuse).isNull());
    EXPECT_FALSE(Picture::fromBytes(drawing.bytes(), Picture::kPixelLimit, 9).isNull());
}

TEST(OneLine, ShowsWhatFitsOfALongTextOrOneOfSeveralLines) {
    const QFontMetrics metrics{QFont()};
    EXPECT_EQ(inOneLine(u"a\nb\tc\u2028d"_s, metrics, 500), u"a b c d"_s);
    const QString longText(65'535, u'梁');
    for (const Qt::TextElideMode elide : {Qt::ElideRight, Qt::ElideMiddle}) {
        const QString line = inOneLine(longText + u'尾', metrics, 200, elide);
        EXPECT_LE(metrics.horizontalAdvance(line), 200);
        EXPECT_EQ(line.count(u'…'), 1);
        EXPECT_EQ(line.back(), elide == Qt::ElideRight ? u'…' : u'尾');
        EXPECT_EQ(inOneLine(u"短"_s, metrics, 200, elide), u"短"_s);
    }
    EXPECT_EQ(shortened(u"ab\U0001F600c"_s, 3), u"ab…"_s);
    EXPECT_EQ(shortened(u"abcdef"_s, 4, Qt::ElideMiddle), u"ab…ef"_s);
}

/// The grid stands where its window's pixels are no whole ones of the device. Run by the test below
/// with a scale factor.
TEST(PictureGridScaled, DISABLED_DrawsPixelForPixel) {
    QImage stripes(400, 400, QImage::Format_RGB32);
    for (int y = 0; y < 400; ++y) {
        for (int x = 0; x < 400; ++x) {
            stripes.setPixelColor(x, y, (x + y) % 2 == 0 ? Qt::black : Qt::white);
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    ASSERT_TRUE(stripes.save(&buffer, "png"));
    QWidget window;
    PictureGrid grid(&window);
    grid.setGeometry(7, 5, 501, 451);
    grid.zoom(2);
    Album album(bytes);
    QStringListModel model(QStringList{u"图"_s});
    grid.setPictures(&model, &album);
    window.resize(520, 470);
    window.show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return grid.stateOf(0) == PictureGrid::State::Shown; }));
    const QImage image = grid.thumbnails().image(0);
    const QImage drawn = window.grab().toImage();
    for (int y = 0; y + image.height() <= drawn.height(); ++y) {
        for (int x = 0; x + image.width() <= drawn.width(); ++x) {
            const QRect place(QPoint(x, y), image.size());
            if (drawn.pixel(place.topLeft()) == image.pixel(0, 0) &&
                drawn.pixel(place.bottomRight()) ==
                    image.pixel(place.width() - 1, place.height() - 1) &&
                drawn.copy(place).convertToFormat(QImage::Format_RGB32) ==
                    image.convertToFormat(QImage::Format_RGB32)) {
                return;
            }
        }
    }
    FAIL() << "blurred";
}

TEST(PictureGridScaled, IsSharpAtEveryRatio) {
    for (const char* ratio : {"1", "1.25", "1.5", "1.75", "2"}) {
        QProcess scaled;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"QT_SCALE_FACTOR"_s, QString::fromLatin1(ratio));
        scaled.setProcessEnvironment(environment);
        scaled.start(QCoreApplication::applicationFilePath(),
                     {u"--gtest_also_run_disabled_tests"_s,
                      u"--gtest_filter=PictureGridScaled.DISABLED_DrawsPixelForPixel"_s});
        EXPECT_TRUE(scaled.waitForFinished(-1));
        EXPECT_EQ(scaled.exitCode(), 0) << ratio << scaled.readAllStandardOutput().constData();
    }
}

}  // namespace
}  // namespace varo::ui
