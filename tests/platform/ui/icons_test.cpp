#include "platform/ui/icons.h"

#include "platform/ui/fonts.h"

#include <QFontMetrics>
#include <QImage>

#include <gtest/gtest.h>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

int differentPixels(const QImage& a, const QImage& b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            count += a.pixel(x, y) != b.pixel(x, y);
        }
    }
    return count;
}

TEST(Icons, CanBeToldApartAtTheSmallestSize) {
    std::vector<QImage> images;
    for (int image = 1; image <= 7; ++image) {
        images.push_back(nodeIcon(static_cast<NodeImage>(image)).pixmap(16, 16).toImage());
    }
    for (const int image : {2, 12, 13}) {
        images.push_back(formulaIcon(static_cast<FormulaImage>(image)).pixmap(16, 16).toImage());
    }
    for (size_t i = 0; i < images.size(); ++i) {
        ASSERT_EQ(images[i].size(), QSize(16, 16)) << i;
        for (size_t k = i + 1; k < images.size(); ++k) {
            EXPECT_GT(differentPixels(images[i], images[k]), 40) << i << " and " << k;
        }
    }
    EXPECT_TRUE(nodeIcon(static_cast<NodeImage>(0)).isNull());
    EXPECT_TRUE(formulaIcon(static_cast<FormulaImage>(7)).isNull());
}

TEST(Icons, StandardActionsHaveThemes) {
    for (const auto& name : {u"edit-copy"_s, u"edit-paste"_s, u"edit-delete"_s, u"edit-find"_s,
                             u"folder-new"_s, u"document-new"_s, u"go-up"_s, u"go-down"_s}) {
        EXPECT_FALSE(themeIcon(name).pixmap(16, 16).isNull()) << name.toStdString();
    }
    EXPECT_TRUE(themeIcon(u"no-such-icon"_s).isNull());
}

TEST(Fonts, TheSongFontWritesChinese) {
    EXPECT_TRUE(QFontMetrics(songFont()).inFont(u'式'));
}

}  // namespace
}  // namespace varo::ui
