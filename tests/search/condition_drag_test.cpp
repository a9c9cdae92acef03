#include "library/condition_text.h"
#include "search/set_filter.h"
#include "support/printers.h"

#include <QDialog>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

struct NoHost : PropertySource {
    QString propertyValue(const QString&) override { return {}; }
};

/// The condition is shown as "and" with a, the group "or" with b and c, and d, a line each.
TEST(ConditionDrag, TheMouseMovesANodeToWhereItIsReleased) {
    const QString before = u"a = 1 and (b = 1 or c = 1) and d = 1"_s;
    const struct {
        const char* what;
        ConditionPath from;
        int line;   ///< where it is released, from 0
        int below;  ///< and how far below the middle of that line
        bool isEscaped;
        QString after;
    } cases[] = {
        {"onto a group", {0, 0}, 2, 0, false, u"(b = 1 or c = 1 or a = 1) and d = 1"_s},
        {"above a node", {0, 2}, 3, -1, false, u"a = 1 and (d = 1 or b = 1 or c = 1)"_s},
        {"below a node", {0, 0}, 5, 1, false, u"(b = 1 or c = 1) and d = 1 and a = 1"_s},
        {"onto empty space", {0, 0}, 9, 0, false, u"(b = 1 or c = 1) and d = 1 and a = 1"_s},
        {"into itself", {0, 1}, 3, -1, false, before},
        {"with Escape", {0, 0}, 2, 0, true, before},
    };
    NoHost host;
    QDialog dialog;
    auto* editor = new SetFilter(host, &dialog);
    (new QVBoxLayout(&dialog))->addWidget(editor);
    dialog.resize(700, 500);
    dialog.show();
    auto& tree = *editor->findChild<QTreeView*>(u"tvCondition"_s);
    QWindow& window = *dialog.windowHandle();
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        editor->load({.tree = parseCondition(before).tree, .remarks = {}});
        editor->setEditing(true);
        QCoreApplication::processEvents();
        const QModelIndex root = tree.model()->index(0, 0);
        const int height = tree.visualRect(root).height();
        const auto inWindow = [&](int x, int y) {
            return tree.viewport()->mapTo(&dialog, QPoint(x, y));
        };
        const QRect node = tree.visualRect(tree.model()->index(each.from.back(), 0, root));
        const QPoint start = inWindow(node.left() + 20, node.center().y());
        const QPoint end =
            inWindow(tree.visualRect(root).left() + 60,
                     each.line * height + height / 2 + each.below * (height / 2 - 1));
        QTest::mousePress(&window, Qt::LeftButton, {}, start);
        QTest::mouseMove(&window, start + QPoint(2, 2));
        // While the next move is handled, the drag has a loop of its own.
        QTimer::singleShot(0, &dialog, [&] {
            QTest::mouseMove(&window, end);
            if (each.isEscaped) {
                QTest::keyClick(&window, Qt::Key_Escape);
            }
            QTest::mouseRelease(&window, Qt::LeftButton, {}, end);
        });
        QTest::mouseMove(&window, start + QPoint(4 * QApplication::startDragDistance(), 0));
        EXPECT_EQ(conditionText(editor->tree()).value_or(QString()), each.after);
    }
}

}  // namespace
}  // namespace varo::test
