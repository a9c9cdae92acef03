#pragma once

#include <QString>

class QAbstractItemView;

namespace varo::ui {

/// Paints `text` in the middle of a view without items; to be called at the end of its
/// paintEvent().
void paintEmptyText(QAbstractItemView& view, const QString& text);

}  // namespace varo::ui
