#pragma once

#include <QLineEdit>
#include <QRect>

namespace varo::ui {

/// The editor of an item's label, laid over it in its view: a frame as wide as its text, with room
/// for more, which grows while the user types. It begins at the label and moves to the left only
/// when the view is too narrow on its right.
class LabelEditor : public QLineEdit {
    Q_OBJECT

  public:
    explicit LabelEditor(QWidget* parent);

    /// The label lies in the row from `row.top()` to `row.bottom()`; its text begins at `textLeft`.
    void setLabel(const QRect& row, int textLeft);

  private:
    void fit();

    QRect row_;
    int textLeft_ = 0;
};

}  // namespace varo::ui
