#include "platform/ui/colors.h"

#include <algorithm>
#include <cmath>

namespace varo::ui {

namespace {

/// Pure red on white has 4.
constexpr double kLeastContrast = 3.5;

/// Share of the light of white that the eye sees in a colour.
double luminance(const QColor& color) {
    const auto light = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * light(color.redF()) + 0.7152 * light(color.greenF()) +
           0.0722 * light(color.blueF());
}

/// From 1, the same, to 21, black and white.
double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace

bool isDark(const QPalette& palette) {
    return luminance(palette.color(QPalette::Window)) <
           luminance(palette.color(QPalette::WindowText));
}

QColor mixed(const QColor& color, const QColor& other, int percent) {
    const auto part = [percent](int from, int to) { return from + (to - from) * percent / 100; };
    return {part(color.red(), other.red()), part(color.green(), other.green()),
            part(color.blue(), other.blue())};
}

QColor readable(const QColor& color, const QPalette& palette) {
    QColor shown = color;
    for (int percent = 10;
         contrast(shown, palette.color(QPalette::Base)) < kLeastContrast && percent <= 100;
         percent += 10) {
        shown = mixed(color, palette.color(QPalette::Text), percent);
    }
    return shown;
}

}  // namespace varo::ui
