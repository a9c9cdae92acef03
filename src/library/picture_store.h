#pragma once

#include "library/current_library.h"
#include "library/picture_files.h"
#include "library/working_files.h"
#include "platform/questions/held_messages.h"

namespace varo {

/// The stored pictures of listed formulas, each in its library and as a working file, and the one
/// picture that has been copied on its own.
class PictureStore {
  public:
    /// Everything handed in must outlive this.
    PictureStore(CurrentLibrary& library, const WorkingFiles& files)
        : library_(library), files_(files) {}

    /// Working file of a formula's picture.
    QString fileOf(qint32 formulaID) const { return files_.listedPicture(formulaID); }

    /// Stores `copy`, which was made for fileOf(), in the library and in the place of the formula's
    /// file: both or neither. Returns false when that fails; the reasons are added to
    /// `messages`.
    bool store(qint32 formulaID, PictureCopy& copy, HeldMessages& messages);

    /// Removes the formula's picture from the library, and its file. Returns false when the library
    /// does not take that.
    bool remove(const clsFormulaInfo& formula);

    /// Puts a copy of the formula's picture aside, from the library when its file has gone. Returns
    /// false when it cannot be read or written; what was put aside before stays then.
    bool copyOut(const clsFormulaInfo& formula);

    /// The file of the picture that has been put aside, and whether it is there.
    QString copiedFile() const { return files_.pictureClipboard(); }
    bool holdsCopy() const;

  private:
    CurrentLibrary& library_;
    const WorkingFiles& files_;
};

}  // namespace varo
