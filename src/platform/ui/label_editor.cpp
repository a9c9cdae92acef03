#include "platform/ui/label_editor.h"

#include <QStyle>
#include <QStyleOptionFrame>

#include <algorithm>

namespace varo::ui {

namespace {

constexpr int LeastWidth = 160;

/// The margin that the line edit keeps around its text besides that of the style.
constexpr int InnerMargin = 2;

constexpr int CaretWidth = 2;

/// How far the frame goes beyond the row.
constexpr int Overlap = 2;

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
    const int inset = contents.left() + InnerMargin;

    const int viewWidth = parentWidget()->width();
    const int label = textLeft_ - inset;
    const int text = fontMetrics().horizontalAdvance(displayText()) + 2 * inset + CaretWidth;
    const int more = std::max(LeastWidth, text + fontMetrics().height());
    const int width = std::min(viewWidth, std::max(text, std::min(more, viewWidth - label)));
    const int left = std::max(0, std::min(label, viewWidth - width));
    setGeometry(left, std::max(0, row_.top() - Overlap), width, row_.height() + 2 * Overlap);
}

}  // namespace varo::ui
