#pragma once

#include <QLockFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace varo {

/// A folder for the working files of one control. Their names come from identifiers that every
/// library begins anew, so no two controls may share one.
class WorkFolder {
  public:
    /// Takes, for as long as this lives, the first of `preferred` that can be written to and
    /// that no other control uses, in this program or another one; where there is none, a
    /// temporary folder that is removed with this. Each of `preferred` ends with a separator; one
    /// that does not exist is made.
    explicit WorkFolder(const QStringList& preferred);

    /// The folder, with its separator at the end. Nothing can be written there when not even a
    /// temporary folder could be made.
    QString path() const { return path_; }

    /// Whether it is removed with this.
    bool isTemporary() const { return own_ != nullptr; }

  private:
    std::unique_ptr<QLockFile> lock_;
    std::unique_ptr<QTemporaryDir> own_;
    QString path_;
};

}  // namespace varo
