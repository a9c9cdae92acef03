#pragma once

#include "control/folder_tree_model.h"
#include "control/form.h"
#include "control/formula_list.h"
#include "control/state.h"

#include <QObject>

namespace varo {

/// The library tree: builds it from the configured libraries and turns the control to the library
/// and the folder of the node that is selected.
class LibraryTree : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this; `form` lends tvFolder.
    LibraryTree(Form& form, ControlState& state, Questions& questions, FormulaList& list,
                EditBar& editBar);

    /// Fills the tree anew from the configured libraries, opening each in turn; the connection is
    /// left on the last one. Returns false, having told the user, at the first library that cannot
    /// be read; the libraries before it stay.
    bool BuildFormulaTree();

    /// Adds the folders below the node with this key, which has none yet, from the current library.
    /// Returns false when reading fails; shows nothing.
    bool BuildFolderChildren(const QString& key);

    /// Points the connection at a library, if it is not there already, and makes it the current
    /// one. Returns false when it cannot be opened; shows nothing.
    bool openLibrary(const QString& path, const QString& name);

    /// Key of the library that the node with this key belongs to; "" for an unknown key.
    QString GetRootKey(const QString& key) const;

    /// Lists and shows what belongs to the node with this key, as if the user had clicked it. An
    /// unknown key does nothing.
    void selectNode(const QString& key);

    /// Scrolls to the first node and selects it as selectNode does; nothing in an empty tree.
    void selectFirstNode();

    /// Draws the selected node, or the selected list item, as located until removeHighlight().
    void highlightNode(const QString& key);
    void highlightFormula(const QString& key);

    /// Draws the highlighted node or list item as it was before it was located.
    void removeHighlight();

    /// Removes every node.
    void clear();

  private:
    bool addLibrary(const clsFormulaDB& library);
    bool markProperties(const QString& rootKey);

    Form& form_;
    ControlState& state_;
    Questions& questions_;
    FormulaList& list_;
    EditBar& editBar_;
    FolderTreeModel model_;
};

}  // namespace varo
