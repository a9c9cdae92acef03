#pragma once

#include "library/current_library.h"
#include "platform/questions/held_messages.h"

#include <functional>

namespace varo {

/// Writes a formula's stored picture to `file`, replacing what is there. Returns false, with no
/// file there, when the formula has none, or when it cannot be read or written, which `messages` is
/// told.
bool extractPicture(CurrentLibrary& library, qint32 formulaID, const QString& file,
                    HeldMessages& messages);

/// How much of its texts a formula is read with.
enum class FormulaTexts {
    Shown,  ///< at most kShownTextLimit characters of each
    Whole
};

/// Appends the formulas directly under a folder (0: the library's top level), in order, to
/// `formulas`. `pictureOf` gives the path of the picture of a formula that has one stored; its
/// bytes are not read here. An identifier that a damaged table repeats is read once. Returns false
/// when reading fails; what was read before stays.
bool readFormulas(CurrentLibrary& library, qint32 folderID, FormulaTexts texts,
                  const std::function<QString(qint32 formulaID)>& pictureOf,
                  colFormulaInfo& formulas);

/// Completes the texts of a formula that was read as FormulaTexts::Shown. Returns false, with the
/// record as it was, when a text that was cut cannot be read.
bool readWholeTexts(CurrentLibrary& library, clsFormulaInfo& formula);

}  // namespace varo
