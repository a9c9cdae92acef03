#include "driver/grid_driver.h"

#include <QTest>

namespace varo {

void settle() {
    // What was queued may have queued more.
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

QStringList textsOf(const ui::EditGrid& grid) {
    QStringList texts;
    for (int row = 1; row < grid.Rows(); ++row) {
        texts.append(grid.GetCellText(row, 0) + u'=' + grid.GetCellText(row, 1));
    }
    return texts;
}

int rowOf(const ui::EditGrid& grid, const QString& name) {
    for (int row = 1; row < grid.Rows(); ++row) {
        if (grid.GetCellText(row, 0) == name) {
            return row;
        }
    }
    throw DriverError(QStringLiteral("the formula has no variable '%1'").arg(name));
}

QLineEdit& beginTyping(ui::EditGrid& grid, const QString& name, const QString& value) {
    const QModelIndex cell = grid.model()->index(rowOf(grid, name) - 1, 1);
    grid.setFocus();
    grid.setCurrentIndex(cell);
    QTest::keyClick(&grid, Qt::Key_F2);
    QWidget* opened = grid.indexWidget(cell);
    auto* editor = qobject_cast<QLineEdit*>(opened);
    if (editor == nullptr && opened != nullptr) {
        editor = opened->findChild<QLineEdit*>();
    }
    if (editor == nullptr) {
        throw DriverError(QStringLiteral("the value of '%1' cannot be edited").arg(name));
    }
    editor->selectAll();
    QTest::keyClick(editor, Qt::Key_Delete);
    editor->insert(value);
    return *editor;
}

}  // namespace varo
