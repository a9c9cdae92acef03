#include "library/work_folder.h"

#include "store/library_connection.h"

#include <QDir>

namespace varo {

WorkFolder::WorkFolder(const QStringList& preferred) {
    for (const QString& folder : preferred) {
        QDir().mkpath(folder);
        lock_ = std::make_unique<QLockFile>(folder + QStringLiteral("Varo_CalcEx.lock"));
        lock_->setStaleLockTime(0);  // a control may have it for days
        if (lock_->tryLock(0)) {
            path_ = folder;
            return;
        }
    }
    own_ = std::make_unique<QTemporaryDir>();
    path_ = normalisedFolder(own_->isValid() ? own_->path()
                                             : QDir::temp().filePath(QStringLiteral("Varo/none")));
}

}  // namespace varo
