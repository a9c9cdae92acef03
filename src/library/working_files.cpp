#include "library/working_files.h"

#include "store/library_connection.h"

namespace varo {

void WorkingFiles::setFolder(const QString& folder, const QStringList& defaults) {
    if (!folder.isEmpty()) {
        folder_ = normalisedFolder(folder);
        isTemporary_ = false;
        return;
    }
    chosen_.push_back(std::make_unique<WorkFolder>(defaults));
    folder_ = chosen_.back()->path();
    isTemporary_ = chosen_.back()->isTemporary();
}

QString WorkingFiles::listedPicture(qint32 formulaID) const {
    return folder_ + QString::number(formulaID) + QStringLiteral("TempPic.bmp");
}

QString WorkingFiles::copiedPicture(qint32 formulaID) const {
    return folder_ + QString::number(formulaID) + QStringLiteral("PastePic.bmp");
}

QString WorkingFiles::pictureClipboard() const {
    return folder_ + QStringLiteral("backupPic.def");
}

}  // namespace varo
