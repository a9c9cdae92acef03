#pragma once

#include "control/folder_tree_model.h"
#include "control/form.h"
#include "control/formula_list.h"
#include "control/state.h"

#include <QObject>

#include <utility>
#include <vector>

namespace varo {

/// The library tree: builds it from the configured libraries and turns the control to the library
/// and the folder of the node that is selected.
class LibraryTree : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this; `form` lends tvFolder.
    LibraryTree(Form& form, ControlState& state, Questions& questions, FormulaList& list);

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

    /// Lists and shows what belongs to the node with this key, as if the user had clicked it.
    /// Returns whether its formulas are listed then; an unknown key does nothing.
    bool selectNode(const QString& key);

    /// Makes sure that the list shows the selected node, which may have been selected by opening it
    /// only. Returns false, the user having been told, when it cannot.
    bool showSelectedNode();

    /// Selects the node whose formulas are listed, when another one is.
    void selectListedNode();

    /// Makes the selected node the one that edit commands act on.
    void makeSelectedCurrent();

    /// Scrolls to the first node and selects it as selectNode does; nothing in an empty tree.
    void selectFirstNode();

    /// Draws the selected node, or the selected list item, as located until removeHighlight().
    void highlightNode(const QString& key);
    void highlightFormula(const QString& key);

    /// Draws the highlighted node or list item as it was before it was located.
    void removeHighlight();

    /// Removes every node.
    void clear();

    /// Whether the library of the node with this key is the current one.
    bool isOfCurrentLibrary(const QString& key) const;

    /// Who stores the label that the user has typed for a folder; see FolderTreeModel.
    void setRenamer(FolderTreeModel::Renamer renamer) { model_.setRenamer(std::move(renamer)); }

    /// How many levels of new folders can be shown below the node with this key.
    int levelsBelow(const QString& key) const;

    /// Appends a folder that the library holds since now to the children of a node, scrolls it into
    /// view, and returns its key. It is the first of `rows`; the others that descend from it are
    /// shown below it.
    QString appendFolder(const QString& parentKey, FolderRows rows);

    /// Removes a folder that the library holds no more, with everything below it.
    void removeFolder(const QString& key);

    /// Reads all folders of the current library. Returns false when reading fails; shows nothing.
    bool readFolders(FolderRows& rows);

    /// Replaces what is below a node by the folders among `rows` that descend from it; what was
    /// open there is open again. Folders have the picture of a folder, or keep their own.
    void replaceFolders(const QString& parentKey, FolderRows rows, bool keepPictures);

    /// Reads which folders of the current library carry properties, 0 for the library itself.
    /// Returns false when reading fails, with those read before in `ids`; shows nothing.
    bool readFoldersWithProperty(std::vector<qint32>& ids);

    /// Gives the nodes of a library that carry properties their pictures; a folder that the tree
    /// does not have is passed over.
    void markProperties(const QString& rootKey, const std::vector<qint32>& ids);

  private:
    bool addLibrary(const clsFormulaDB& library);
    void removeStale(const QString& key, const QString& keptKey);
    void collectExpanded(const QModelIndex& parent, QStringList& keys) const;
    std::vector<std::pair<QString, FolderTree::Images>> markedBelow(
        const QModelIndex& parent) const;

    Form& form_;
    ControlState& state_;
    Questions& questions_;
    FormulaList& list_;
    FolderTreeModel model_;
};

}  // namespace varo
