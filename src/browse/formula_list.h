#pragma once

#include "control/form.h"
#include "control/formula_list_model.h"
#include "control/state.h"
#include "formula/formula_pane.h"
#include "platform/held_messages.h"

#include <QObject>

namespace varo {

/// The formula list: lists the formulas of a folder and shows the one that is selected.
class FormulaList : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this; `form` lends lvFormula.
    FormulaList(Form& form, ControlState& state, Questions& questions, FormulaPane& pane);

    /// Lists the formulas directly under a folder of the current library (0: its top level) and
    /// writes their stored pictures to files. Returns false when reading fails; the caller tells
    /// the user. What there is to tell of properties and pictures waits for showMessages().
    bool ShowFolderFormulas(qint32 folderID);

    /// Tells what the last listing had to tell. The host may turn the control to something else
    /// meanwhile: nothing that was known before holds afterwards.
    void showMessages() { messages_.show(questions_); }

    /// Empties the list with its records.
    void clear();

    /// Shows the formula of the listed folder with this key, and calculates it. Ends silently at
    /// the first step that does not know the key.
    void SelFormula(const QString& TheKey);

    /// Clears the formula panel, then sets panel state and command state to `state`.
    void SetSelectionState(int state);

    /// Says what is selected, in tree or list, and so which edit commands are offered.
    void setCommandState(CommandState state);

    /// Makes the selected item the one that edit commands act on; without one, no formula is
    /// selected.
    void makeSelectedCurrent();

    /// Empties the panel for a folder without formulas; tree and list stay enabled.
    void showNone();

    /// As FormulaPane::storeEdits, for the labels of tree and list too.
    bool storeEdits();

    /// Empties list and panel, because the current library can no longer be told what is in them.
    void showNothing();

    /// Who stores the label that the user has typed for a formula; see FormulaListModel.
    void setRenamer(FormulaListModel::Renamer renamer) { model_.setRenamer(std::move(renamer)); }

    /// Appends a formula that the library holds since now to the listed ones, and returns its key.
    QString appendFormula(const clsFormulaInfo& formula);

    /// Removes a formula that the library holds no more, with its record; an unknown key does
    /// nothing.
    void removeFormula(const QString& key);

    /// Gives the item with this key another picture; an unknown key does nothing.
    void setImage(const QString& key, ui::FormulaImage image);

    /// Key of the selected item; "" when none is selected.
    QString selectedKey() const;

    bool isEmpty() const { return state_.listedFormulas.Count() == 0; }
    QString firstKey() const { return state_.listedFormulas.Item(1).NodeKey; }

  signals:
    /// A formula is about to be shown.
    void showing();
    void commandStateChanged(CommandState state);

  private:
    void clickFormula(const QModelIndex& index);
    void clickEmptySpace();

    Form& form_;
    ControlState& state_;
    Questions& questions_;
    FormulaPane& pane_;
    HeldMessages messages_;
    FormulaListModel model_;
};

}  // namespace varo
