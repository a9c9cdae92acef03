#pragma once

#include "editing/edit_actions.h"

#include <QMenu>
#include <QObject>

namespace varo {

/// The popup menu `PopTreeMnu` of tree and list, and the keys that give the same commands there.
class EditMenu : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    EditMenu(SelectionController& selection, LibraryTree& tree, FormulaList& list,
             EditActions& actions);

  private:
    enum Place : unsigned { Tree = 1, List = 2 };

    void openOnTree(const NodeId& node, const QPoint& position);
    void openOnList(const QModelIndex& index, const QPoint& position);
    void open(Place place, const QPoint& position);

    SelectionController& selection_;
    LibraryTree& tree_;
    FormulaList& list_;
    EditActions& actions_;
    QMenu* menu_;  ///< owned by the tree's parent
};

}  // namespace varo
