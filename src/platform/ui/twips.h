#pragma once

namespace varo::ui {

/// Lengths in twips are 1/1440 inch; a device-independent pixel is 1/96 inch.
inline constexpr int kTwipsPerPixel = 15;

constexpr int toPixels(int twips) {
    return twips / kTwipsPerPixel;
}
constexpr int toTwips(int pixels) {
    return pixels * kTwipsPerPixel;
}

}  // namespace varo::ui
