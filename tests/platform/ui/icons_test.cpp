#include "platform/ui/icons.h"

#include "platform/ui/ink.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QPalette>

#include <gtest/gtest.h>

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

TEST(Icons, AreDrawnForTheScreensPixels) {
    for (const QIcon& icon : {ownIcon(u"library"_s), themeIcon(u"edit-find"_s)}) {
        const QImage small = icon.pixmap(16, 16).toImage();
        for (const double scale : {1.25, 2.0}) {
            for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Disabled}) {
                const QImage drawn = icon.pixmap({16, 16}, scale, mode).toImage();
                ASSERT_EQ(drawn.size(), (QSizeF(16, 16) * scale).toSize());
                EXPECT_GT(differentPixels(drawn, small.scaled(drawn.size())), 20) << scale;
            }
        }
    }
}

TEST(Icons, StandardActionsCanBeSeenOnEveryPaletteAndToldFromDisabledOnes) {
    const QPalette before = QApplication::palette();
    for (const QColor& window : {QColor(0xef, 0xef, 0xef), QColor(0x2d, 0x2d, 0x30)}) {
        QApplication::setPalette(QPalette(window));
        const auto contrast = [&](QIcon::Mode mode) {
            QImage shown(16, 16, QImage::Format_RGB32);
            shown.fill(window);
            QPainter painter(&shown);
            themeIcon(u"edit-copy"_s).paint(&painter, shown.rect(), Qt::AlignCenter, mode);
            return inkOf(shown, window).contrast;
        };
        EXPECT_GT(contrast(QIcon::Normal), 120) << window.red();
        EXPECT_GT(contrast(QIcon::Disabled), 40) << window.red();
        EXPECT_LT(contrast(QIcon::Disabled), contrast(QIcon::Normal) - 60) << window.red();
    }
    EXPECT_TRUE(themeIcon(u"no-such-icon"_s).isNull());
    QApplication::setPalette(before);
}

}  // namespace
}  // namespace varo::ui
