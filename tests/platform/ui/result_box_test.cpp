#include "platform/ui/result_box.h"

#include "support/printers.h"

#include <QApplication>
#include <QVBoxLayout>

#include <cstdlib>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

using State = ResultBox::State;

/// A box of 120 pixels in a window, and what is to be seen in it.
class ResultBoxTest : public testing::Test {
  protected:
    ResultBoxTest() {
        box_.setFixedWidth(120);
        layout_.addWidget(&box_);
        window_.show();
    }

    void setPalette(const QColor& base, const QColor& text) {
        QPalette palette(base);
        palette.setColor(QPalette::Base, base);
        palette.setColor(QPalette::Text, text);
        window_.setPalette(palette);
    }

    /// How far the colours between two x differ most from the background, in brightness; and how
    /// far red exceeds blue there.
    struct Ink {
        int contrast = 0;
        int redness = 0;
    };
    Ink ink(int left, int right) {
        const QImage shown = box_.grab().toImage();
        const QColor base = box_.palette().color(QPalette::Base);
        Ink found;
        for (int i = 0; i < (right - left) * (shown.height() - 8); ++i) {
            const QColor pixel =
                shown.pixelColor(left + i % (right - left), 4 + i / (right - left));
            found.contrast =
                std::max(found.contrast, std::abs(qGray(pixel.rgb()) - qGray(base.rgb())));
            found.redness = std::max(found.redness, pixel.red() - pixel.blue());
        }
        return found;
    }

    QWidget window_;
    QVBoxLayout layout_{&window_};
    ResultBox box_;
};

TEST_F(ResultBoxTest, StatesCanBeSeenOnEveryPaletteAndNotByColourAlone) {
    for (const auto& [base, text] : {std::pair{Qt::white, Qt::black}, {Qt::black, Qt::white}}) {
        setPalette(base, text);
        box_.setResult(u"■■■■"_s);
        const Ink normal = ink(4, 110);
        EXPECT_GT(normal.contrast, 200);
        EXPECT_LT(normal.redness, 60);
        box_.setState(State::Stale, u"旧"_s);
        EXPECT_GT(ink(4, 110).contrast, 90);
        EXPECT_LT(ink(4, 110).contrast, 170);
        box_.setResult(u"■■■■"_s, State::Error);
        EXPECT_GT(ink(40, 110).redness, 100);
        EXPECT_GT(ink(40, 110).contrast, 60);
        for (const State state : {State::Error, State::Doubtful}) {
            box_.setResult(QString(), state);
            EXPECT_GT(ink(4, 24).redness, 80) << "the icon";
        }
        box_.setResult(u"■■■■"_s);
        EXPECT_EQ(ink(4, 110).contrast, normal.contrast);
    }
}

TEST_F(ResultBoxTest, ATextThatIsCutEndsInAnEllipsisAndStandsWholeInTheToolTip) {
    const int end = 116;
    const int width = box_.fontMetrics().horizontalAdvance(u'█');
    // Whether the upper half of the last pixels is blank: an ellipsis is all that leaves it so.
    const auto isCut = [&] {
        const QImage shown = box_.grab().toImage();
        for (int y = 4; y < shown.height() / 2; ++y) {
            if (qGray(shown.pixel(end - width / 2, y)) < 128) {
                return false;
            }
        }
        return ink(end - width, end).contrast > 100;
    };
    setPalette(Qt::white, Qt::black);
    box_.setResult(QString(200, u'█'));
    EXPECT_TRUE(isCut());
    EXPECT_TRUE(box_.toolTip().contains(QString(200, u'█')));
    box_.setState(State::Stale, u"因为"_s);
    EXPECT_TRUE(box_.toolTip().contains(u"因为\n█"_s));
    EXPECT_EQ(box_.accessibleDescription(), u"因为"_s);
    EXPECT_EQ(box_.text(), QString(200, u'█'));
    box_.setCursorPosition(200);
    EXPECT_FALSE(isCut()) << "its end";
    box_.setResult(QString(100 / width, u'█'));
    EXPECT_FALSE(isCut());
    EXPECT_EQ(box_.accessibleDescription(), QString());
}

}  // namespace
}  // namespace varo::ui
