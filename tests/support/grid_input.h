#pragma once

#include "platform/ui/edit_grid.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <stdexcept>

namespace varo::test {

/// The rows of a grid of two columns as "name=value".
inline QStringList textsOf(const ui::EditGrid& grid) {
    QStringList texts;
    for (int row = 1; row < grid.Rows(); ++row) {
        texts.append(grid.GetCellText(row, 0) + u'=' + grid.GetCellText(row, 1));
    }
    return texts;
}

/// The row of a grid whose first column holds `name`.
inline int rowOf(const ui::EditGrid& grid, const QString& name) {
    for (int row = 1; row < grid.Rows(); ++row) {
        if (grid.GetCellText(row, 0) == name) {
            return row;
        }
    }
    throw std::logic_error("no such variable in the grid");
}

/// Types a value into a variable's row, replacing what is there, and leaves the editor open.
inline QLineEdit& beginTyping(ui::EditGrid& grid, const QString& name, const QString& value) {
    grid.setFocus();
    grid.setCurrentIndex(grid.model()->index(rowOf(grid, name) - 1, 1));
    QTest::keyClick(&grid, Qt::Key_F2);
    auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    if (editor == nullptr) {
        throw std::logic_error("the cell opened no editor");
    }
    editor->selectAll();
    QTest::keyClick(editor, Qt::Key_Delete);
    editor->insert(value);
    return *editor;
}

}  // namespace varo::test
