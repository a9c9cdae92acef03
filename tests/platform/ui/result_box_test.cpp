#include "platform/ui/result_box.h"

#include "platform/ui/ink.h"
#include "support/printers.h"

#include <QApplication>
#include <QVBoxLayout>

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

    /// What is drawn between two x.
    Ink ink(int left, int right) {
        const QImage shown = box_.grab().toImage();
        return inkOf(shown.copy(left, 4, right - left, shown.height() - 8),
                     box_.palette().color(QPalette::Base));
    }

    QWidget window_;
    QVBoxLayout layout_{&window_};
    ResultBox box_;
};

TEST_F(ResultBoxTest, StatesCanBeSeenOnEveryPaletteAndNotByColourAlone) {
    for (const QPalette& palette : lightAndDark()) {
        window_.setPalette(palette);
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
    window_.setPalette(lightAndDark()[0]);
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
