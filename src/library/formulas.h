#pragma once

#include "library/current_library.h"

namespace varo {

/// What became of a formula for a library.
enum class InsertedFormula { None, WithoutPicture, Whole };

/// Appends a formula, with the picture that its file holds, to the folder that it names; `id`
/// receives the identifier that it got. `funcs` tells why the bytes of its picture were not stored.
InsertedFormula insertFormula(CurrentLibrary& library, clsDBFuncs& funcs,
                              const clsFormulaInfo& formula, qint32& id);

/// Appends an empty formula with this name to the folder; `id` receives its identifier. Returns
/// false when that fails.
bool addFormula(CurrentLibrary& library, qint32 folder, const QString& name, qint32& id);

/// Each stores one field of a formula as it is, and returns false, with the formula as it was, when
/// that fails. A formula that has gone is no failure.
bool renameFormula(CurrentLibrary& library, qint32 id, const QString& name);
bool storeExpression(CurrentLibrary& library, qint32 id, const QString& expression);
bool storeMemo(CurrentLibrary& library, qint32 id, const QString& memo);

/// Exchanges the places of two formulas of one folder. Returns false with nothing changed when that
/// fails.
bool exchangeFormulas(CurrentLibrary& library, qint32 id, qint32 neighbour);

enum class DeletedFormula { None, WithoutProperties, Whole };

/// Deletes a formula and its properties.
DeletedFormula deleteFormula(CurrentLibrary& library, qint32 id);

}  // namespace varo
