#pragma once

#include "store/collections.h"

#include <QList>
#include <QString>

namespace varo {

/// Name of the configuration file, which lists the libraries.
inline constexpr auto kConfigFileName = "Varo-Pelm.ini";

/// Operations on a list of configured libraries: the control's own, or a copy that is being edited.

/// Path of a library's file.
QString pathOf(const clsFormulaDB& library);

/// Replaces the records of `to` by copies of those of `from`, in order; keys are given anew.
void copyLibraries(const colFormulaDB& from, colFormulaDB& to);

/// The library of the list that is the file at `path`, by whatever spelling of its path, symbolic
/// link or hard link; a file that is not there is known by its spelling alone. Null when there is
/// none.
const clsFormulaDB* findLibrary(const colFormulaDB& libraries, const QString& path);

/// Gives the records at `positions` (from 1, in any order) the places in front of the record at
/// `before`, or behind the last one for Count() + 1, in the order that they have. What a record
/// says moves; the keys stay with their positions.
void moveLibraries(colFormulaDB& libraries, const QList<int>& positions, int before);

}  // namespace varo
