#include "platform/ui/picture_grid.h"

#include <QBuffer>
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

    Read readBytes(int picture, QByteArray& bytes) override {
        if (picture == missing) {
            return Read::None;
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
        {{2000, 1}, 100, 1, {100, 1}},
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
    Album album({400, 400});
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

}  // namespace
}  // namespace varo::ui
