#include "condition_scene.h"

#include "driver/dialog_driver.h"

#include <QApplication>
#include <QComboBox>
#include <QTest>

namespace varo::guide {

namespace {

void typeOver(const QString& text) {
    QWidget* editor = QApplication::focusWidget();
    auto* line = qobject_cast<QLineEdit*>(editor);
    if (const auto* box = qobject_cast<QComboBox*>(editor)) {
        line = box->lineEdit();
    }
    if (line == nullptr) {
        throw DriverError(QStringLiteral("nothing is being typed"));
    }
    line->selectAll();
    line->insert(text);
}

void addComparison(GuideDesk& desk, const QDialog& dialog, const QString& name, int comparison,
                   const QString& constant) {
    desk.click(partOf<QWidget>(dialog, "cmdAddCompare"));
    typeOver(name);
    desk.pressKey(Qt::Key_Tab);
    if (auto* box = qobject_cast<QComboBox*>(QApplication::focusWidget())) {
        box->setCurrentIndex(comparison);
    }
    desk.pressKey(Qt::Key_Tab);
    typeOver(constant);
    desk.pressKey(Qt::Key_Return);
}

}  // namespace

QImage locateConditions(GuideDesk& desk) {
    constexpr int kGreaterOrEqual = 5;
    constexpr int kLess = 2;
    constexpr int kSameText = 7;
    QImage taken;
    desk.clickItem(desk.tree(), QStringLiteral("轴向拉伸与压缩"));
    const auto open = [&] {
        desk.clickItem(desk.list(), QStringLiteral("轴向拉压杆的变形"), Qt::RightButton);
        desk.choose("mnuPopLocateFormula");
    };
    withDialog("frmLocateNode", open, [&](QDialog& dialog) {
        const auto click = [&](const char* name) { desk.click(partOf<QWidget>(dialog, name)); };
        click("cmdAddProp");
        typeOver(QStringLiteral("轴心受力"));
        desk.pressKey(Qt::Key_Return);
        click("cmdAddAnd");
        addComparison(desk, dialog, QStringLiteral("弹性模量"), kGreaterOrEqual,
                      QStringLiteral("200"));
        click("cmdAddOr");
        addComparison(desk, dialog, QStringLiteral("截面面积"), kLess, QStringLiteral("400"));
        addComparison(desk, dialog, QStringLiteral("材料"), kSameText, QStringLiteral("型钢"));
        click("cmdTry");
        taken = dialog.grab().toImage();
    });
    return taken;
}

}  // namespace varo::guide
