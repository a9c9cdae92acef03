#pragma once

#include "platform/questions/questions.h"
#include "store/collections.h"
#include "store/library_connection.h"

#include <QString>

namespace varo {

/// What the user is asked a library file for.
enum class SelectMode { New = 1, Add = 2 };

/// Asks for a library file. `ok` true: `path` is the file's, with the extension ".mdb". `ok` false:
/// `path` is "cancel" when the user cancelled; one who named no file has been told.
void SelectDataBase(SelectMode mode, QString& path, bool& ok, Questions& questions);

/// Text of a library that has been added and not been named yet.
QString newLibraryText();

struct AddedLibrary {
    QString key;      ///< of the new record; "" when there is none
    QString refusal;  ///< why there is none, for the user
};

/// Appends the library at `path` to the list, under `text`, if it is a library that can be opened
/// and is not in the list yet. The list is unchanged otherwise.
AddedLibrary AddExistingLibrary(const QString& path, const QString& text, colFormulaDB& libraries);

/// Why a library does not open, for the user; "" for None. A second line says what lies beside the
/// file, and a last one what the store says, where the first leaves that open.
QString reasonOf(const OpenResult& result);

/// Why the library's file cannot be read, for the user; "" when it can, as far as that can be told
/// at once. Changes nothing on the disk (see data::Access::Glance). A lock is waited for as always.
QString whyNotOpened(const clsFormulaDB& library);

}  // namespace varo
