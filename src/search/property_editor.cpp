#include "search/property_editor.h"

#include "library/library_backup.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/wait_cursor.h"
#include "search/property_dialog.h"
#include "store/keys.h"
#include "store/library_connection.h"

#include <QDir>
#include <QPointer>
#include <QScopeGuard>
#include <QStandardPaths>

namespace varo {

namespace {

/// Where backups lie that must outlast a temporary working folder; all programs have the same one.
QString lastingFolder() {
    return normalisedFolder(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
                            QStringLiteral("/BackupDB"));
}

QString cancelled(PropertySession& session) {
    const ui::clsWaitCursor waiting;
    return session.cancel();
}

}  // namespace

void PropertyEditor::reopen(int number) {
    if (!library_.open(number)) {
        questions_.inform(QStringLiteral("重新打开数据库失败！"));
    }
    library_.variables().Clear();
    isOpen_ = false;
}

/// The folder for the backup, which is there. What earlier dialogs have left is settled.
QString PropertyEditor::settledFolder() {
    const ui::clsWaitCursor waiting;
    const QString lasting = freeBackupFolder(lastingFolder(), questions_);
    if (files_.isTemporary()) {
        QDir().mkpath(lasting);
        return lasting;
    }
    settleLeftBackup(files_.folder(), questions_);
    return files_.folder();
}

std::optional<int> PropertyEditor::edit(const PropertyTarget& target) {
    const QString key = libraryKey(target.library);
    if (isOpen_ || !library_.libraries().contains(key)) {
        return std::nullopt;
    }
    isOpen_ = true;
    int number = target.library;
    const clsFormulaDB chosen = library_.libraries().Item(key);
    library_.close();
    QString failure;
    PropertySession session(settledFolder(), library_.funcs());
    {
        const ui::clsWaitCursor waiting;
        failure = session.SetConnection(chosen.FormulaDBPath, chosen.FormulaDBName, {});
        if (failure.isEmpty()) {
            failure = session.InitForm(target.node, target.type);
        }
    }
    if (!failure.isEmpty()) {
        session.cancel();
        questions_.inform(failure);
        reopen(number);
        return std::nullopt;
    }
    // The host may destroy the control, and the dialog with it, while it is open.
    const QPointer<QWidget> window(&window_);
    const QPointer dialog(
        new PropertyDialog(target.title, session, properties_, questions_, &window_));
    dialog->offerNames([&] {
        const ui::clsWaitCursor waiting;
        return session.namesInUse(library_.libraries());
    });
    dialog->setWindowTitle(QStringLiteral("%1 - %2").arg(target.title, target.name));
    const auto unload = qScopeGuard([&] { delete dialog; });
    const bool isAccepted = ui::runDialog(*dialog);
    if (window.isNull()) {
        session.cancel();
        return std::nullopt;
    }
    // Or have turned the control to another library, or to this one again.
    number = library_.isOpen() ? library_.number() : number;
    library_.close();
    std::optional<int> count;
    if (isAccepted && !dialog.isNull()) {
        count = dialog->propertyCount();
    } else if (const QString told = cancelled(session); !told.isEmpty()) {
        questions_.inform(told);
    }
    reopen(number);
    return count;
}

}  // namespace varo
