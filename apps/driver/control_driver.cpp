#include "driver/control_driver.h"

#include <QApplication>
#include <QTest>
#include <QToolBar>

#include <algorithm>

namespace varo {

namespace {

QStringList texts(const QAbstractItemModel& model, const QModelIndex& parent = {}, int depth = 0) {
    QStringList result;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        result.append(QString(2 * depth, u' ') + index.data().toString());
        result += texts(model, index, depth + 1);
    }
    return result;
}

QModelIndex match(const ui::NodeView& view, int role, const QString& wanted) {
    const QAbstractItemModel& model = *view.model();
    return model
        .match(model.index(0, 0), role, wanted, 1,
               Qt::MatchExactly | Qt::MatchCaseSensitive | Qt::MatchRecursive)
        .value(0);
}

}  // namespace

QStringList ControlDriver::treeTexts() const {
    return texts(*tree().model());
}
QStringList ControlDriver::listTexts() const {
    return texts(*list().model());
}

QString ControlDriver::value(const QString& variable) const {
    return grid().GetCellText(rowOf(grid(), variable), 1);
}

QModelIndex ControlDriver::find(const ui::NodeView& view, const QString& text) {
    return match(view, Qt::DisplayRole, text);
}
QModelIndex ControlDriver::findKey(const ui::NodeView& view, const QString& key) {
    return match(view, ui::NodeView::KeyRole, key);
}

void ControlDriver::click(QWidget& target, Qt::MouseButton button, QPoint place) {
    if (!target.isVisible() || !target.isEnabled()) {
        throw DriverError(QStringLiteral("'%1' cannot be clicked").arg(target.objectName()));
    }
    QTest::mouseClick(&target, button, {}, place);
    settle();
}

void ControlDriver::clickItem(ui::NodeView& view, const QModelIndex& item, Qt::MouseButton button,
                              int along) {
    if (!item.isValid()) {
        throw DriverError(QStringLiteral("'%1' has no such item").arg(view.objectName()));
    }
    view.scrollTo(item);
    settle();
    const QRect rect = view.visualRect(item);
    click(*view.viewport(), button,
          {rect.left() + std::min(rect.width() / 2, along), rect.center().y()});
}

void ControlDriver::clickEmptySpace(QAbstractItemView& view, Qt::MouseButton button) {
    click(*view.viewport(), button, view.viewport()->rect().bottomLeft() + QPoint(5, -5));
}

void ControlDriver::openMenu(ui::NodeView& view, const QString& text) {
    clickItem(view, find(view, text), Qt::RightButton);
}

void ControlDriver::choose(const char* entry) {
    const QString name = QString::fromLatin1(entry);
    const QList<QAction*> actions = menu().actions();
    const auto found = std::ranges::find(actions, name, &QObject::objectName);
    if (!menu().isVisible() || found == actions.end()) {
        throw DriverError(QStringLiteral("no open menu has '%1'").arg(name));
    }
    click(menu(), Qt::LeftButton, menu().actionGeometry(*found).center());
}

QToolButton& ControlDriver::editButton(const QString& key) const {
    auto* button = child<QToolBar>("tbEdit").findChild<QToolButton*>(key);
    if (button == nullptr) {
        throw DriverError(QStringLiteral("the tool bar has no '%1'").arg(key));
    }
    return *button;
}

QLineEdit* ControlDriver::labelEditor() const {
    const auto editors = control_->findChildren<QLineEdit*>(QStringLiteral("labelEditor"));
    const auto open = std::ranges::find_if(editors, &QWidget::isVisible);
    return open == editors.end() ? nullptr : *open;
}

void ControlDriver::typeLabel(const QString& text, Qt::Key key) {
    QLineEdit* editor = labelEditor();
    if (editor == nullptr) {
        throw DriverError(QStringLiteral("no label is being edited"));
    }
    editor->selectAll();
    editor->insert(text);
    QTest::keyClick(editor, key);
    settle();
}

void ControlDriver::typeValue(const QString& variable, const QString& value) {
    QTest::keyClick(&beginTyping(grid(), variable, value), Qt::Key_Return);
    settle();
}

void ControlDriver::type(QWidget& widget, const QString& text) {
    widget.setFocus();
    settle();
    for (const QChar character : text) {
        QTest::sendKeyEvent(QTest::Click, &widget, Qt::Key_unknown, QString(character),
                            Qt::NoModifier);
    }
    settle();
}

void ControlDriver::type(const QString& text) {
    if (QWidget* focused = QApplication::focusWidget()) {
        type(*focused, text);
    }
}

void ControlDriver::pressKey(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    if (QWidget* focused = QApplication::focusWidget()) {
        QTest::keyClick(focused, key, modifiers);
        settle();
    }
}

}  // namespace varo
