#pragma once

#include "library/current_library.h"

namespace varo {

/// What became of a formula for a library.
enum class InsertedFormula { None, WithoutPicture, Whole };

/// Appends a formula, with the picture that its file holds, to the folder that it names; `id`
/// receives the identifier that it got. `funcs` tells why the bytes of its picture were not stored.
InsertedFormula insertFormula(CurrentLibrary& library, clsDBFuncs& funcs,
                              const clsFormulaInfo& formula, qint32& id);

enum class DeletedFormula { None, WithoutProperties, Whole };

/// Deletes a formula and its properties.
DeletedFormula deleteFormula(CurrentLibrary& library, qint32 id);

}  // namespace varo
