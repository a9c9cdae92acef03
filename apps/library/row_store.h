#pragma once

#include "library/library_rows.h"
#include "platform/data/connection.h"

namespace varo {

class PictureReader;

/// Which identifiers folders and formulas get in the library.
enum class Numbering {
    AsInText,  ///< those of the rows
    Next       ///< the next ones of the tables
};

// Each adds rows of a text to an open library, and throws data::Error when they cannot be stored.

/// Returns the identifier in the library.
qint32 storeFolder(data::Connection& connection, const FolderRow& row, Numbering numbering);

/// The same; also throws TextError when the picture cannot be made.
qint32 storeFormula(data::Connection& connection, const FormulaRow& row, Numbering numbering,
                    PictureReader& pictures);

void storeValues(data::Connection& connection, const std::vector<ValueRow>& rows);

/// The properties of folders and formulas, and the conditions that they have.
void storeConditions(data::Connection& connection, const LibraryRows& rows);

}  // namespace varo
