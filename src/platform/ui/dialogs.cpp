#include "platform/ui/dialogs.h"

#include <QDialog>
#include <QGuiApplication>

namespace varo::ui {

bool runDialog(QDialog& dialog) {
    QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    const int result = dialog.exec();
    QGuiApplication::restoreOverrideCursor();
    return result == QDialog::Accepted;
}

}  // namespace varo::ui
