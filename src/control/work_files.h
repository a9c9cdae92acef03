#pragma once

#include "control/state.h"

namespace varo {

/// The working files in the control's work folder: named here alone, whatever their format.

/// The picture of a listed formula.
inline QString listedPictureFile(const ControlState& state, qint32 formulaID) {
    return state.workFolder + QString::number(formulaID) + QStringLiteral("TempPic.bmp");
}

/// The picture of a formula that has been copied.
inline QString copiedPictureFile(const ControlState& state, qint32 formulaID) {
    return state.workFolder + QString::number(formulaID) + QStringLiteral("PastePic.bmp");
}

/// The picture that has been copied on its own.
inline QString pictureClipboardFile(const ControlState& state) {
    return state.workFolder + QStringLiteral("backupPic.def");
}

}  // namespace varo
