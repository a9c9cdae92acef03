#pragma once

#include "library/current_library.h"
#include "library/working_files.h"
#include "platform/questions/held_messages.h"

namespace varo {

/// Writes a formula's stored picture to `file`, replacing what is there. Returns false, with no
/// file there, when the formula has none, or when it cannot be read or written, which `messages` is
/// told.
bool extractPicture(CurrentLibrary& library, qint32 formulaID, const QString& file,
                    HeldMessages& messages);

/// Reads formulas of a library as records, and their stored pictures into files.
class FormulaReader {
  public:
    /// Names the file for the picture of a formula.
    using PictureFile = QString (WorkingFiles::*)(qint32 formulaID) const;

    /// `messages` is told why the first formula is left without its picture; what it shows must
    /// wait until nothing is open any more. Everything handed in must outlive this.
    FormulaReader(CurrentLibrary& library, const WorkingFiles& files, PictureFile pictureFile,
                  HeldMessages& messages);

    /// Appends the formulas directly under a folder (0: the library's top level), in order, to
    /// `formulas`. An identifier that a damaged table repeats is read once. A picture that is
    /// empty, or cannot be written to its file, leaves its formula without one. Returns false when
    /// reading fails; what was read before stays.
    bool read(qint32 folderID, colFormulaInfo& formulas);

  private:
    QString pictureOf(qint32 formulaID, qint32 pictureType);

    CurrentLibrary& library_;
    const WorkingFiles& files_;
    PictureFile pictureFile_;
    HeldMessages& messages_;
    bool reported_ = false;
};

}  // namespace varo
