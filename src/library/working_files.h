#pragma once

#include "library/work_folder.h"

#include <QStringList>

#include <memory>
#include <vector>

namespace varo {

/// The working picture files of one control: where they lie, and what each is called, whatever its
/// format.
class WorkingFiles {
  public:
    /// Files lie in `folder` from now on, which no other control may have; "" chooses the first of
    /// `defaults` that can be written to and that no other control uses, or else a temporary
    /// folder. A folder chosen before is kept as long as this lives, or until discard().
    void setFolder(const QString& folder, const QStringList& defaults);

    /// No file that has been written so far is used any more.
    void discard() { chosen_.clear(); }

    /// The folder with its separator.
    const QString& folder() const { return folder_; }

    /// Whether the folder is a temporary one, which is removed with this or by discard().
    bool isTemporary() const { return isTemporary_; }

    /// The picture of a listed formula.
    QString listedPicture(qint32 formulaID) const;
    /// The picture of a formula that has been copied.
    QString copiedPicture(qint32 formulaID) const;
    /// The picture that has been copied on its own.
    QString pictureClipboard() const;

  private:
    std::vector<std::unique_ptr<WorkFolder>> chosen_;
    QString folder_;
    bool isTemporary_ = false;
};

}  // namespace varo
