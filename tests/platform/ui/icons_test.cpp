#include "platform/ui/icons.h"

#include "platform/ui/fonts.h"

#include <QApplication>
#include <QFontInfo>
#include <QFontMetrics>
#include <QImage>
#include <QPixmap>

#include <gtest/gtest.h>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

std::vector<QIcon> allIcons() {
    std::vector<QIcon> icons;
    for (int image = 1; image <= 7; ++image) {
        icons.push_back(nodeIcon(static_cast<NodeImage>(image)));
    }
    for (const int image : {2, 12, 13}) {
        icons.push_back(formulaIcon(static_cast<FormulaImage>(image)));
    }
    return icons;
}

int differentPixels(const QImage& a, const QImage& b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            count += a.pixel(x, y) != b.pixel(x, y);
        }
    }
    return count;
}

TEST(Icons, AreDrawnAtEverySizeAndScale) {
    for (const QIcon& icon : allIcons()) {
        ASSERT_FALSE(icon.isNull());
        for (const int size : {16, 24, 32, 64}) {
            EXPECT_EQ(icon.pixmap(QSize(size, size), 1.0).size(), QSize(size, size));
            EXPECT_EQ(icon.pixmap(QSize(size, size), 2.0).size(), QSize(2 * size, 2 * size));
        }
    }
}

TEST(Icons, CanBeToldApartAtTheSmallestSize) {
    std::vector<QImage> images;
    for (const QIcon& icon : allIcons()) {
        images.push_back(icon.pixmap(16, 16).toImage());
    }
    for (size_t i = 0; i < images.size(); ++i) {
        for (size_t k = i + 1; k < images.size(); ++k) {
            EXPECT_GT(differentPixels(images[i], images[k]), 40) << i << " and " << k;
        }
    }
}

TEST(Icons, AnUnknownIndexHasNone) {
    EXPECT_TRUE(nodeIcon(static_cast<NodeImage>(0)).isNull());
    EXPECT_TRUE(formulaIcon(static_cast<FormulaImage>(7)).isNull());
}

TEST(Icons, StandardActionsHaveThemes) {
    for (const auto& name : {u"edit-copy"_s, u"edit-paste"_s, u"edit-delete"_s, u"edit-find"_s,
                             u"folder-new"_s, u"document-new"_s, u"go-up"_s, u"go-down"_s}) {
        const QIcon icon = themeIcon(name);
        ASSERT_FALSE(icon.isNull()) << name.toStdString();
        const QImage image = icon.pixmap(16, 16).toImage();
        QImage empty(image.size(), image.format());
        empty.fill(Qt::transparent);
        EXPECT_GT(differentPixels(image, empty), 10) << name.toStdString();
    }
    EXPECT_TRUE(themeIcon(u"no-such-icon"_s).isNull());
}

TEST(Fonts, TheSongFontKeepsTheApplicationsSizeAndWritesChinese) {
    const QFont font = songFont();
    EXPECT_EQ(QFontInfo(font).pointSize(), QFontInfo(QApplication::font()).pointSize());
    EXPECT_TRUE(QFontMetrics(font).inFont(u'式'));
}

}  // namespace
}  // namespace varo::ui
