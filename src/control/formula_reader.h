#pragma once

#include "control/state.h"
#include "platform/held_messages.h"

namespace varo {

/// Reads formulas of the current library as records, and their stored pictures into files.
class FormulaReader {
  public:
    /// Names the file for the picture of a formula, in the work folder.
    using PictureFile = QString (*)(const ControlState& state, qint32 formulaID);

    /// `messages` is told why formulas are left without their pictures; what it shows must wait
    /// until nothing is open any more. Everything handed in must outlive this.
    FormulaReader(ControlState& state, PictureFile pictureFile, HeldMessages& messages);

    /// Appends the formulas directly under a folder (0: the library's top level), in order, to
    /// `formulas`. An identifier that a damaged table repeats is read once. A picture that cannot
    /// be written to its file leaves its formula without one. Returns false when reading fails;
    /// what was read before stays.
    bool read(qint32 folderID, colFormulaInfo& formulas);

  private:
    QString extractPicture(qint32 formulaID, qint32 pictureType);

    ControlState& state_;
    PictureFile pictureFile_;
    clsDBFuncs dbFuncs_;
    bool filesRefused_ = false;  ///< the work folder takes no file, and so no other one
};

}  // namespace varo
