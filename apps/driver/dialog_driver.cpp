#include "driver/dialog_driver.h"

#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <exception>

namespace varo {

void withDialog(const char* name, const std::function<void()>& open,
                const std::function<void(QDialog&)>& use) {
    const QString wanted = QString::fromLatin1(name);
    bool wasOpened = false;
    std::exception_ptr failure;
    QTimer whileOpen;
    QObject::connect(&whileOpen, &QTimer::timeout, &whileOpen, [&] {
        const QPointer<QDialog> dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog.isNull() || dialog->objectName() != wanted) {
            return;
        }
        whileOpen.stop();
        wasOpened = true;
        try {
            if (!QTest::qWaitForWindowActive(dialog)) {
                throw DriverError(QStringLiteral("'%1' does not become active").arg(wanted));
            }
            use(*dialog);
        } catch (...) {
            failure = std::current_exception();
        }
        if (!dialog.isNull() && dialog->isVisible()) {
            dialog->reject();
        }
    });
    whileOpen.start(0);
    open();
    settle();  // what opens it may have been queued
    if (failure) {
        std::rethrow_exception(failure);
    }
    if (!wasOpened) {
        throw DriverError(QStringLiteral("'%1' has not been opened").arg(wanted));
    }
}

void clickOn(QAbstractItemView& view, const QModelIndex& item, Qt::KeyboardModifiers modifiers) {
    if (!item.isValid()) {
        throw DriverError(QStringLiteral("'%1' has no such item").arg(view.objectName()));
    }
    QTest::mouseClick(view.viewport(), Qt::LeftButton, modifiers, view.visualRect(item).center());
    settle();
}

void doubleClickOn(QAbstractItemView& view, const QModelIndex& item) {
    clickOn(view, item);
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(item).center());
    settle();
}

void clickIn(const QDialog& dialog, const char* name) {
    QTest::mouseClick(&partOf<QWidget>(dialog, name), Qt::LeftButton);
    settle();
}

}  // namespace varo
