#include "library/clipboard.h"

#include "library/folders.h"
#include "library/formula_reader.h"
#include "library/picture_files.h"
#include "store/attempt.h"

#include <QFileInfo>
#include <QHash>

namespace varo {

namespace {

/// Inserts copied folders into a library, in their order.
class FolderPaste {
  public:
    FolderPaste(CurrentLibrary& library, qint32 target, int levels, const colFormulaInfo& formulas,
                HeldMessages& messages)
        : library_(library),
          funcs_(messages),
          target_(target),
          levels_(levels),
          formulas_(formulas) {}

    /// The folders must come each behind the one that it is in. False when a step failed.
    bool paste(const clsFormulaInfo& folder);

    FolderRows& rows() { return rows_; }

  private:
    struct Place {
        qint32 id;
        int level;
    };

    bool pasteFormulas(qint32 copied, qint32 folder);

    CurrentLibrary& library_;
    clsDBFuncs funcs_;
    qint32 target_;
    int levels_;
    const colFormulaInfo& formulas_;
    FolderRows rows_;
    QHash<qint32, Place> places_;  ///< of the new folders, by the identifiers of the copied ones
    int nextFormula_ = 1;          ///< formulas stand in the order of their folders
};

bool FolderPaste::paste(const clsFormulaInfo& folder) {
    const Place above = places_.isEmpty() ? Place{target_, 0} : places_.value(folder.FormulaPID);
    const int level = above.level + 1;
    qint32 id = 0;
    if (level > levels_ ||
        !funcs_.AddNewFolder(above.id, folder.FormulaName, id, library_.connection())) {
        return false;
    }
    rows_.add(id, above.id, static_cast<qint64>(rows_.rows().size()), folder.FormulaName);
    places_.insert(folder.FormulaID, {id, level});
    return pasteFormulas(folder.FormulaID, id);
}

bool FolderPaste::pasteFormulas(qint32 copied, qint32 folder) {
    for (; nextFormula_ <= formulas_.Count(); ++nextFormula_) {
        clsFormulaInfo formula = formulas_.Item(nextFormula_);
        if (formula.FormulaPID != copied) {
            break;
        }
        formula.FormulaPID = folder;
        qint32 id = 0;
        if (varo::insertFormula(library_, funcs_, formula, id) != InsertedFormula::Whole) {
            return false;
        }
    }
    return true;
}

/// Puts the pictures of formulas that are copied into files.
class PictureCopies {
  public:
    PictureCopies(CurrentLibrary& library, const WorkingFiles& files, HeldMessages& messages)
        : library_(library),
          files_(files),
          messages_(messages),
          bytesLeft_(QFileInfo(library.connection().path()).size()) {}

    /// The file with a copy of the formula's picture; "" when it is empty or cannot be copied.
    QString copyOf(qint32 formulaID);

  private:
    CurrentLibrary& library_;
    const WorkingFiles& files_;
    HeldMessages& messages_;
    qint64 bytesLeft_;  ///< more than the library's file holds are there only where rows share them
    bool reported_ = false;
};

QString PictureCopies::copyOf(qint32 formulaID) {
    if (bytesLeft_ < 0) {
        return {};
    }
    const QString file = files_.copiedPicture(formulaID);
    HeldMessages messages;
    const bool extracted = extractPicture(library_, formulaID, file, messages);
    if (extracted) {
        bytesLeft_ -= QFileInfo(file).size();
    }
    if (bytesLeft_ < 0) {
        messages.inform(QStringLiteral("公式库文件已经损坏，部分图片没有复制！"));
    }
    // What keeps one picture from its file often keeps all the others too: one message says so.
    if (!reported_ && !messages.isEmpty()) {
        reported_ = true;
        messages.show(messages_);
    }
    return extracted ? file : QString();
}

}  // namespace

void Clipboard::clear() {
    folders_.Clear();
    formulas_.Clear();
}

bool Clipboard::captureFolders(CurrentLibrary& library, qint32 folder, HeldMessages& messages) {
    clear();
    bool captured = false;
    const bool read = attempt([&] {
        const data::ReadSnapshot snapshot(library.connection());
        captured = capture(library, folder, messages);
    });
    if (!read || !captured) {
        clear();
    }
    return read && captured;
}

bool Clipboard::capture(CurrentLibrary& library, qint32 folder, HeldMessages& messages) {
    FolderRows rows;
    if (!readFolders(library, rows)) {
        return false;
    }
    rows.sort();
    PictureCopies pictures(library, files_, messages);
    const auto copyOf = [&](qint32 id) { return pictures.copyOf(id); };
    for (const FolderRows::Row& row : rows.subtreeOf(folder)) {
        folders_.Add(row.id, rows.name(row).toString(), {}, {}, {}, PictureNone, row.parentId, {});
        if (!readFormulas(library, row.id, FormulaTexts::Whole, copyOf, formulas_)) {
            return false;
        }
    }
    return folders_.Count() > 0;
}

void Clipboard::captureFormula(CurrentLibrary& library, const clsFormulaInfo& formula,
                               HeldMessages& messages) {
    clear();
    clsFormulaInfo copied = formula;
    if (!readWholeTexts(library, copied)) {
        messages.inform(QStringLiteral("读取公式失败，没有复制！"));
        return;
    }
    copied.FormulaPicPath = copyPicture(library, formula, messages);
    formulas_.Add(copied);
}

/// Puts the formula's picture aside, from the library when its file has gone, and returns where it
/// is; "" when there is none.
QString Clipboard::copyPicture(CurrentLibrary& library, const clsFormulaInfo& formula,
                               HeldMessages& messages) const {
    if (formula.FormulaPicType != PictureStored) {
        return {};
    }
    PictureCopy copy(files_.copiedPicture(formula.FormulaID));
    const bool copied = (copy.take(formula.FormulaPicPath) && copy.replaceTarget()) ||
                        extractPicture(library, formula.FormulaID, copy.target(), messages);
    return copied ? copy.target() : QString();
}

PastedFolders Clipboard::insertFolders(CurrentLibrary& library, qint32 target, bool withSubfolders,
                                       int levels, HeldMessages& messages) const {
    FolderPaste paste(library, target, levels, formulas_, messages);
    bool complete = true;
    const bool stored = attempt([&] {
        data::Transaction transaction(library.connection());
        for (const clsFormulaInfo& folder : folders_) {
            complete = complete && paste.paste(folder);
            if (!complete || !withSubfolders) {
                break;
            }
        }
        transaction.commit();
    });
    return stored ? PastedFolders{std::move(paste.rows()), complete} : PastedFolders{};
}

PastedFormula Clipboard::insertFormula(CurrentLibrary& library, qint32 folder,
                                       HeldMessages& messages) const {
    PastedFormula pasted{InsertedFormula::None, formulas_.Item(1)};
    clsFormulaInfo& formula = pasted.formula;
    formula.FormulaPID = folder;
    clsDBFuncs funcs(messages);
    const bool committed = attempt([&] {
        data::Transaction transaction(library.connection());
        pasted.inserted = varo::insertFormula(library, funcs, formula, formula.FormulaID);
        transaction.commit();
    });
    const bool hasPicture = QFileInfo(formula.FormulaPicPath).isFile();
    formula.FormulaPicPath.clear();
    if (!committed) {
        pasted.inserted = InsertedFormula::None;
    }
    if (hasPicture && pasted.inserted == InsertedFormula::Whole) {
        const QString file = files_.listedPicture(formula.FormulaID);
        if (extractPicture(library, formula.FormulaID, file, messages)) {
            formula.FormulaPicPath = file;
        }
    }
    return pasted;
}

}  // namespace varo
