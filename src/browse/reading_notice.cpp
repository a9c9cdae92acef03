#include "browse/reading_notice.h"

#include "platform/ui/node_view.h"

#include <QLabel>
#include <QScrollBar>

namespace varo {

ReadingNotice::ReadingNotice(LibraryTree& tree, QLabel& line) : tree_(tree), line_(line) {
    line.hide();
    connect(&tree, &LibraryTree::readingChanged, this, &ReadingNotice::show);
    connect(tree.view().verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
        if (!tree_.isReading()) {
            hideInPlace();
        }
    });
}

void ReadingNotice::show(int waiting) {
    if (waiting > 0) {
        line_.setText(QStringLiteral("正在读取公式库，还有 %1 个，按Esc停止").arg(waiting));
        line_.show();
    } else if (!line_.isHidden()) {
        line_.setText(QStringLiteral("读取公式库已结束"));
        hideInPlace();
    }
}

/// Hides the line, unless the tree, which becomes higher by that, would have to scroll.
void ReadingNotice::hideInPlace() {
    const QScrollBar& bar = *tree_.view().verticalScrollBar();
    const int rowsBelow = bar.maximum() - bar.value();
    if (bar.value() == 0 || rowsBelow * tree_.view().sizeHintForRow(0) >= line_.height()) {
        line_.hide();
    }
}

}  // namespace varo
