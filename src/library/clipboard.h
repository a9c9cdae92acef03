#pragma once

#include "library/current_library.h"
#include "library/folder_rows.h"
#include "library/formulas.h"
#include "library/working_files.h"
#include "platform/questions/held_messages.h"

namespace varo {

/// What insertFolders() has put into a library.
struct PastedFolders {
    FolderRows rows;        ///< the new folders, each behind the one that it is in
    bool complete = false;  ///< nothing is missing
};

/// What insertFormula() has put into a library.
struct PastedFormula {
    InsertedFormula inserted = InsertedFormula::None;
    clsFormulaInfo formula = {};  ///< as it is stored, with the file of its picture
};

/// What copy has put aside: a folder with all below it, or a formula, as they were then. Their
/// pictures are working files.
class Clipboard {
  public:
    /// `files` must outlive this.
    explicit Clipboard(const WorkingFiles& files) : files_(files) {}
    ~Clipboard() { clear(); }
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;

    bool holdsFolders() const { return folders_.Count() > 0; }
    /// Whether there are folders in the copied one.
    bool holdsSubfolders() const { return folders_.Count() > 1; }
    /// Whether there are formulas, copied alone or with their folders.
    bool holdsFormulas() const { return formulas_.Count() > 0; }
    bool holdsFormula() const { return !holdsFolders() && formulas_.Count() > 0; }

    /// Empties it and removes the files of the copied pictures.
    void clear();

    /// Copies a folder, all folders below it and their formulas as one state of the library.
    /// Returns false when the library cannot be read or has no such folder; the clipboard is then
    /// empty. Failures of pictures are added to `messages`.
    bool captureFolders(CurrentLibrary& library, qint32 folder, HeldMessages& messages);

    /// Copies a formula of the library. A picture that cannot be copied is left out; the reason is
    /// added to `messages`, as is that a text which is listed cut cannot be read, with which the
    /// clipboard stays empty.
    void captureFormula(CurrentLibrary& library, const clsFormulaInfo& formula,
                        HeldMessages& messages);

    /// Puts a copy of the folders, with or without those in the first one, and of their formulas
    /// behind the folders in `target` (0: the top level). New folders are `levels` deep at most.
    /// What was done before a step that fails stays done, unless the library takes nothing at all.
    /// Failures of pictures are added to `messages`.
    PastedFolders insertFolders(CurrentLibrary& library, qint32 target, bool withSubfolders,
                                int levels, HeldMessages& messages) const;

    /// Puts a copy of the formula behind the others in `folder`; messages as above.
    PastedFormula insertFormula(CurrentLibrary& library, qint32 folder,
                                HeldMessages& messages) const;

  private:
    bool capture(CurrentLibrary& library, qint32 folder, HeldMessages& messages);
    QString copyPicture(CurrentLibrary& library, const clsFormulaInfo& formula,
                        HeldMessages& messages) const;

    const WorkingFiles& files_;
    colFormulaInfo folders_;   ///< the copied one first, each behind the one that it is in
    colFormulaInfo formulas_;  ///< in the order of their folders, then of their list
};

}  // namespace varo
