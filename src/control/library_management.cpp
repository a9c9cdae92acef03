#include "control/library_management.h"

#include "control/library_change.h"
#include "manager/library_manager_dialog.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/wait_cursor.h"

#include <QScopeGuard>

namespace varo {

LibraryManagement::LibraryManagement(QWidget& window, colFormulaDB& libraries, TreeRebuild& rebuild,
                                     Questions* given, Questions& questions)
    : window_(window),
      libraries_(libraries),
      rebuild_(rebuild),
      given_(given),
      questions_(questions),
      configuration_(libraries) {}

bool LibraryManagement::read(const QString& folder, QString& errorText) {
    folder_ = folder;
    readFailed_ = !configuration_.ReadConfigFile(folder, errorText);
    if (!readFailed_) {
        // Left by a program that was ended behind its last step; a later loss of the file that is
        // there must not bring the old list back.
        Configuration::removeBackup(folder);
    }
    return !readFailed_;
}

void LibraryManagement::forget() {
    folder_.clear();
    readFailed_ = false;
    libraries_.Clear();
}

LibraryManagement::Outcome LibraryManagement::manage(const QStringList& files) {
    if (isOpen_ || folder_.isEmpty()) {
        return Outcome::Unchanged;
    }
    // The host may name another folder, or destroy the control, while the dialog is open.
    const QString folder = folder_;
    const QPointer<QWidget> window(&window_);
    const QPointer dialog(new LibraryManagerDialog(libraries_, &window_, given_));
    const auto unload = qScopeGuard([&] { delete dialog; });
    isOpen_ = true;
    dialog->setConfigFolder(folder);
    if (readFailed_) {
        configuration_.readCompleteLibraries(folder);
    }
    dialog->CopyColData(true);
    if (readFailed_) {
        libraries_.Clear();
    }
    dialog->InitForm();
    if (!files.isEmpty()) {
        QMetaObject::invokeMethod(
            dialog, [dialog, files] { dialog->addFiles(files); }, Qt::QueuedConnection);
    }
    ui::runDialog(*dialog);
    if (window.isNull()) {
        return Outcome::Unchanged;
    }
    isOpen_ = false;
    if (dialog.isNull() || dialog->Cancelled()) {
        return Outcome::Unchanged;
    }
    return apply(folder, [&] { dialog->CopyColData(false); });
}

LibraryManagement::Outcome LibraryManagement::apply(const QString& folder,
                                                    const std::function<void()>& replace) {
    const ui::clsWaitCursor waiting;
    rebuild_.clear();
    bool allRead = true;
    const LibraryChange change = changeLibraries(configuration_, libraries_, folder, replace, [&] {
        allRead = rebuild_.build(libraries_, OnUnreadable::GoOn);
        return true;
    });
    switch (change) {
        case LibraryChange::NoFolder:
            questions_.inform(QStringLiteral("用户指定的配置文件路径不存在！"));
            return Outcome::Gone;
        case LibraryChange::NotWritten:
            questions_.inform(QStringLiteral("重写配置文件失败，修改无效！"));
            return Outcome::Unchanged;
        case LibraryChange::NotBuilt:
            return Outcome::Unchanged;
        case LibraryChange::Done:
            break;
    }
    readFailed_ = false;
    return allRead ? Outcome::AllRead : Outcome::SomeUnread;
}

}  // namespace varo
