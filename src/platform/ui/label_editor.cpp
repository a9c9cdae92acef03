#include "platform/ui/label_editor.h"

#include <QStyle>
#include <QStyleOptionFrame>

#include <algorithm>

namespace varo::ui {

namespace {

constexpr int kLeastWidth = 160;

/// The margin that the line edit keeps around its text besides that of the style.
constexpr int kInnerMargin = 2;

constexpr int kCaretWidth = 2;

/// Pixels by which the frame exceeds the row above and below.
constexpr int kOverlap = 2;

}  // namespace

LabelEditor::LabelEditor(QWidget* parent) : QLineEdit(parent) {
    setObjectName(QStringLiteral("labelEditor"));
    connect(this, &QLineEdit::textChanged, this, &LabelEditor::fit);
}

void LabelEditor::setLabel(const QRect& row, int textLeft) {
    row_ = row;
    textLeft_ = textLeft;
    fit();
}

void LabelEditor::fit() {
    QStyleOptionFrame panel;
    initStyleOption(&panel);
    const QRect contents = style()->subElementRect(QStyle::SE_LineEditContents, &panel, this);
    const int inset = contents.left() + kInnerMargin;

    const int viewWidth = parentWidget()->width();
    const int label = textLeft_ - inset;
    const int text = fontMetrics().horizontalAdvance(displayText()) + 2 * inset + kCaretWidth;
    const int more = std::max(kLeastWidth, text + fontMetrics().height());
    const int width = std::min(viewWidth, std::max(text, std::min(more, viewWidth - label)));
    const int left = std::max(0, std::min(label, viewWidth - width));
    setGeometry(left, std::max(0, row_.top() - kOverlap), width, row_.height() + 2 * kOverlap);
}

}  // namespace varo::ui
