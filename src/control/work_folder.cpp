#include "control/work_folder.h"

#include "store/library_connection.h"

namespace varo {

WorkFolder::WorkFolder(const QString& preferred)
    : lock_(preferred + QStringLiteral("Varo_CalcEx.lock")), path_(preferred) {
    lock_.setStaleLockTime(0);  // only a holder that is gone gives it up
    if (!lock_.tryLock(0)) {
        own_ = std::make_unique<QTemporaryDir>();
        path_ = normalisedFolder(own_->path());
    }
}

}  // namespace varo
