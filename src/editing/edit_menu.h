#pragma once

#include "control/library_tree.h"
#include "editing/edit_actions.h"

#include <QMenu>
#include <QObject>

namespace varo {

/// The popup menu `PopTreeMnu` of tree and list, and the keys that give the same commands there.
class EditMenu : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    EditMenu(Form& form, ControlState& state, EditActions& actions, LibraryTree& tree,
             FormulaList& list);

  private:
    enum Place : unsigned { Tree = 1, List = 2 };

    void openOnTree(const QModelIndex& index, const QPoint& position);
    void openOnList(const QModelIndex& index, const QPoint& position);
    void open(Place place, const QPoint& position);

    Form& form_;
    ControlState& state_;
    EditActions& actions_;
    LibraryTree& tree_;
    FormulaList& list_;
    QMenu menu_;
};

}  // namespace varo
