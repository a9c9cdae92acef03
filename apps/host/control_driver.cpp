#include "host/control_driver.h"

#include "control/varo_calcex.h"
#include "host/host_options.h"
#include "host/named_widget.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/node_view.h"
#include "store/keys.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>

namespace varo::host {

namespace {

constexpr int NameColumn = 0;
constexpr int ValueColumn = 1;

bool hasItem(const ui::NodeView& view, const QString& key) {
    const QAbstractItemModel& model = *view.model();
    return !model
                .match(model.index(0, 0), ui::NodeView::KeyRole, key, 1,
                       Qt::MatchExactly | Qt::MatchCaseSensitive | Qt::MatchRecursive)
                .isEmpty();
}

void pressKey(QWidget& target, int key, const QString& text = {}) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&target, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&target, &release);
}

/// Row of a variable in the grid; 0, the header row, for a variable that the formula does not have.
int rowOf(const ui::EditGrid& grid, const QString& name) {
    for (int row = 1; row < grid.Rows(); ++row) {
        if (grid.GetCellText(row, NameColumn) == name) {
            return row;
        }
    }
    return 0;
}

QLineEdit* openEditor(ui::EditGrid& grid, int row) {
    const QModelIndex cell = grid.model()->index(row - 1, ValueColumn);
    grid.setCurrentIndex(cell);
    QAbstractItemView& view = grid;
    view.edit(cell);
    QWidget* editor = grid.indexWidget(cell);
    auto* line = qobject_cast<QLineEdit*>(editor);
    return line == nullptr && editor != nullptr ? editor->findChild<QLineEdit*>() : line;
}

}  // namespace

void selectKey(Varo_CalcEx& control, const QString& key) {
    const bool isFormula = key.startsWith(kFormulaKeyPrefix);
    const auto& view = namedWidget<ui::NodeView>(control, isFormula ? "lvFormula" : "tvFolder");
    if (!hasItem(view, key)) {
        throw UsageError{
            QStringLiteral("there is no %1 with the key '%2'")
                .arg(isFormula ? QStringLiteral("formula") : QStringLiteral("node"), key)};
    }
    if (isFormula) {
        control.SelFormula(key);
    } else {
        control.ClickTreeNode(key);
    }
}

void typeVariable(Varo_CalcEx& control, const QString& name, const QString& value) {
    auto& grid = namedWidget<ui::EditGrid>(control, "MSFEditVarList");
    const int row = rowOf(grid, name);
    QLineEdit* line = row > 0 ? openEditor(grid, row) : nullptr;
    if (line == nullptr) {
        throw UsageError{QStringLiteral("the formula has no variable '%1'").arg(name)};
    }
    line->selectAll();
    pressKey(*line, Qt::Key_Delete);
    for (const char32_t character : value.toUcs4()) {
        pressKey(*line, Qt::Key_unknown, QString::fromUcs4(&character, 1));
    }
    pressKey(*line, Qt::Key_Return);
    // The grid closes its editor, and tells of the new value, only now.
    QCoreApplication::processEvents();
}

void pressCalculate(Varo_CalcEx& control) {
    namedWidget<QPushButton>(control, "cmdCalCulate").click();
}

}  // namespace varo::host
