#include "editing/folder_copies.h"

#include "control/formula_reader.h"
#include "control/work_files.h"
#include "platform/ui/node_view.h"
#include "platform/ui/wait_cursor.h"
#include "store/attempt.h"
#include "store/keys.h"

#include <QFileInfo>
#include <QHash>

#include <vector>

namespace varo {

namespace {

/// Puts the clipboard's folders into a library, in their order.
class FolderPaste {
  public:
    FolderPaste(qint32 target, int levels, ControlState& state, HeldMessages& messages)
        : state_(state), dbFuncs_(messages), target_(target), levels_(levels) {}

    bool paste(const clsFormulaInfo& folder);

    FolderRows& rows() { return rows_; }

  private:
    struct Place {
        qint32 id;
        int level;
    };

    bool pasteFormulas(qint32 copied, qint32 folder);

    ControlState& state_;
    clsDBFuncs dbFuncs_;
    qint32 target_;
    int levels_;
    FolderRows rows_;
    QHash<qint32, Place> places_;  ///< of the new folders, by the identifiers of the copied ones
    int nextFormula_ = 1;          ///< formulas stand in the order of their folders
};

bool FolderPaste::paste(const clsFormulaInfo& folder) {
    const Place above = places_.isEmpty() ? Place{target_, 0} : places_.value(folder.FormulaPID);
    const int level = above.level + 1;
    qint32 id = 0;
    if (level > levels_ ||
        !dbFuncs_.AddNewFolder(above.id, folder.FormulaName, id, state_.connection)) {
        return false;
    }
    rows_.add(id, above.id, static_cast<qint32>(rows_.rows().size()), folder.FormulaName);
    places_.insert(folder.FormulaID, {id, level});
    return pasteFormulas(folder.FormulaID, id);
}

bool FolderPaste::pasteFormulas(qint32 copied, qint32 folder) {
    const colFormulaInfo& formulas = state_.clipboard.formulas;
    for (; nextFormula_ <= formulas.Count(); ++nextFormula_) {
        clsFormulaInfo formula = formulas.Item(nextFormula_);
        if (formula.FormulaPID != copied) {
            break;
        }
        formula.FormulaPID = folder;
        if (insertFormula(formula, dbFuncs_, state_) != InsertedFormula::Whole) {
            return false;
        }
    }
    return true;
}

/// Captures folder by folder, each before those in it, these in their order.
bool capture(const QModelIndex& folder, ControlState& state, FormulaReader& reader) {
    std::vector<QModelIndex> open{folder};
    while (!open.empty()) {
        const QModelIndex next = open.back();
        open.pop_back();
        const qint32 id = folderIdOf(ui::NodeView::keyOf(next));
        if (state.clipboard.folders.contains(formulaKey(id))) {
            continue;
        }
        state.clipboard.folders.Add(id, next.data(Qt::EditRole).toString(), {}, {}, {}, PictureNone,
                                    folderIdOf(ui::NodeView::keyOf(next.parent())), {});
        if (!reader.read(id, state.clipboard.formulas)) {
            return false;
        }
        for (int row = next.model()->rowCount(next) - 1; row >= 0; --row) {
            open.push_back(next.model()->index(row, 0, next));
        }
    }
    return true;
}

}  // namespace

InsertedFormula insertFormula(clsFormulaInfo& formula, clsDBFuncs& dbFuncs, ControlState& state) {
    if (!dbFuncs.AddNewFormula(formula.FormulaPID, formula.FormulaName, formula.FormulaExpression,
                               formula.FormulaMemo, formula.FormulaPicType, formula.FormulaID,
                               state.connection)) {
        return InsertedFormula::Nothing;
    }
    const bool hasFile = QFileInfo(formula.FormulaPicPath).isFile();
    return !hasFile || dbFuncs.InserFieldFromFile(formula.FormulaPicPath, formula.FormulaID,
                                                  state.connection)
               ? InsertedFormula::Whole
               : InsertedFormula::WithoutPicture;
}

bool captureFolders(const QModelIndex& folder, ControlState& state, HeldMessages& messages) {
    const ui::clsWaitCursor waiting;
    state.clipboard.clear();
    state.clipboard.key = ui::NodeView::keyOf(folder);
    state.clipboard.kind = Clipboard::Folders;
    FormulaReader reader(state, copiedPictureFile, messages);
    bool captured = false;
    const bool read = attempt([&] {
        const data::ReadSnapshot snapshot(state.connection);
        captured = capture(folder, state, reader);
    });
    if (!read || !captured) {
        state.clipboard.clear();
    }
    return read && captured;
}

PastedFolders insertClipboardFolders(qint32 target, bool withSubfolders, int levels,
                                     ControlState& state, HeldMessages& messages) {
    FolderPaste paste(target, levels, state, messages);
    bool complete = true;
    const bool stored = attempt([&] {
        data::Transaction transaction(state.connection);
        for (const clsFormulaInfo& folder : state.clipboard.folders) {
            complete = complete && paste.paste(folder);
            if (!complete || !withSubfolders) {
                break;
            }
        }
        transaction.commit();
    });
    return stored ? PastedFolders{std::move(paste.rows()), complete} : PastedFolders{};
}

}  // namespace varo
