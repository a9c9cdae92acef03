#include "driver/dialog_driver.h"

#include <QApplication>
#include <QPointer>
#include <QTimer>

#include <exception>

namespace varo {

void withDialog(const char* name, const std::function<void()>& open,
                const std::function<void(QDialog&)>& use) {
    bool wasOpened = false;
    std::exception_ptr failure;
    QTimer whileOpen;
    QObject::connect(&whileOpen, &QTimer::timeout, &whileOpen, [&] {
        const QPointer<QDialog> dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog.isNull() || dialog->objectName() != QLatin1StringView(name)) {
            return;
        }
        whileOpen.stop();
        wasOpened = true;
        try {
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
    if (failure) {
        std::rethrow_exception(failure);
    }
    if (!wasOpened) {
        throw DriverError(
            QStringLiteral("'%1' has not been opened").arg(QString::fromLatin1(name)));
    }
}

}  // namespace varo
