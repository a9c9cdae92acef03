#pragma once

namespace varo::ui {

/// Lengths in twips are 1/1440 inch; a device-independent pixel is 1/96 inch.
inline constexpr int TwipsPerPixel = 15;

constexpr int toPixels(int twips) {
    return twips / TwipsPerPixel;
}
constexpr int toTwips(int pixels) {
    return pixels * TwipsPerPixel;
}

}  // namespace varo::ui
