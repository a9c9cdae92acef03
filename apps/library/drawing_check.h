#pragma once

#include <QByteArray>
#include <QString>

namespace varo {

/// Why an SVG drawing is not rendered; "" when it can be. A drawing is plain XML of bounded size,
/// depth and number of elements and style rules; it refers to nothing but itself, not in circles,
/// and holds pixel pictures as data alone. So nothing outside it is read, and rendering it takes
/// bounded memory.
QString drawingProblem(const QByteArray& drawing);

/// Most pixels of a side of the rendered drawing, and of a picture that it holds.
inline constexpr int kLargestSide = 8192;

}  // namespace varo
