#pragma once

#include <QColor>
#include <QImage>
#include <QPalette>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace varo::ui {

/// How far pixels differ most from the background, in brightness; and exceed in one colour.
struct Ink {
    int contrast = 0;
    int redness = 0;
    int blueness = 0;
};

inline Ink inkOf(const QImage& image, const QColor& background) {
    Ink most;
    for (int i = 0; i < image.width() * image.height(); ++i) {
        const QColor pixel = image.pixelColor(i % image.width(), i / image.width());
        const int brightness = qGray(pixel.rgb()) - qGray(background.rgb());
        most.contrast = std::max(most.contrast, std::abs(brightness));
        most.redness = std::max(most.redness, pixel.red() - pixel.blue());
        most.blueness = std::max(most.blueness, pixel.blue() - pixel.red());
    }
    return most;
}

/// Black on white and white on black.
inline std::array<QPalette, 2> lightAndDark() {
    std::array palettes{QPalette(Qt::white), QPalette(Qt::black)};
    for (QPalette& palette : palettes) {
        palette.setColor(QPalette::Base, palette.color(QPalette::Button));
        palette.setColor(QPalette::Text, palette.color(QPalette::ButtonText));
    }
    return palettes;
}

}  // namespace varo::ui
