#pragma once

#include "browse/formula_list_model.h"
#include "library/current_library.h"
#include "library/working_files.h"
#include "platform/questions/held_messages.h"

#include <QObject>

#include <optional>

namespace varo::ui {
class NodeView;
}

namespace varo {

/// The formula list: the formulas of one folder of the current library. It shows which one is
/// selected; SelectionController decides.
class FormulaList : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    FormulaList(ui::NodeView& view, CurrentLibrary& library, const WorkingFiles& files);

    ui::NodeView& view() { return view_; }
    FormulaListModel& model() { return model_; }

    /// Lists the formulas directly under a folder of the current library (0: its top level), each
    /// with the path that its stored picture is to have; no formula is selected then. Returns false
    /// when reading fails; the list is then incomplete. What there is to tell of properties is put
    /// into `messages`.
    bool ShowFolderFormulas(qint32 folderID, HeldMessages& messages);

    /// Empties the list with its records.
    void clear();

    bool isEmpty() const { return model_.formulas().Count() == 0; }
    /// Identifier of the first formula; the list must not be empty.
    qint32 first() const { return model_.formulas().Item(1).FormulaID; }
    /// The formula `step` places behind another one (before it when negative); nothing there is
    /// none.
    std::optional<qint32> neighbour(qint32 id, int step) const;

    /// Selects a listed formula and scrolls to it; `std::nullopt` deselects all. Raises no signal.
    void select(std::optional<qint32> id);

    /// Opens the label of a listed formula.
    void editLabel(qint32 id);

  signals:
    /// The user clicked a formula, or reached it with the keyboard.
    void formulaClicked(qint32 id);
    /// The user clicked where no formula is.
    void emptyClicked();

  private:
    ui::NodeView& view_;
    CurrentLibrary& library_;
    const WorkingFiles& files_;
    FormulaListModel model_;
};

}  // namespace varo
