#pragma once

#include <QLockFile>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace varo {

/// A folder for the working files of one control. Their names come from identifiers that every
/// library begins anew, so no two controls may share one.
class WorkFolder {
  public:
    /// Takes `preferred` for as long as this lives; when another control, of this program or another
    /// one, has it or it takes no files, a temporary folder that goes away with this.
    explicit WorkFolder(const QString& preferred);

    /// The folder, with its separator at the end.
    QString path() const { return path_; }

  private:
    QLockFile lock_;
    std::unique_ptr<QTemporaryDir> own_;
    QString path_;
};

}  // namespace varo
