#pragma once

#include "browse/folder_tree_model.h"
#include "browse/sliced_work.h"
#include "library/current_library.h"
#include "library/file_identity.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QObject>
#include <QSet>

#include <optional>
#include <utility>
#include <vector>

namespace varo::ui {
class NodeView;
}

namespace varo {

/// What becomes of the libraries behind one that cannot be read.
enum class OnUnreadable { Stop, GoOn };

/// The library tree: the configured libraries and their folders. It shows which node is selected;
/// SelectionController decides, but for a node that the user opens, which is then selected.
class LibraryTree : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    LibraryTree(ui::NodeView& view, CurrentLibrary& library, Questions& questions);

    ui::NodeView& view() { return view_; }
    FolderTreeModel& model() { return model_; }

    /// Fills the tree anew from `libraries`, opening each in turn; the last one that was is then
    /// the current library. The node of a library that cannot be read is marked, with path and
    /// reason as its tool tip. To stop there tells the user; the libraries before it stay. Behind a
    /// thousand libraries the others are read when they are shown for the first time, which their
    /// tool tips say. What is not read within the reading time, but for the first library that can
    /// be, is read while the program goes on, until Escape is pressed or the window is hidden (see
    /// SlicedWork); the rest is then read when it is shown, too. What is locked meanwhile is tried
    /// again for the reading time after all others. Returns whether all that was opened could be
    /// read.
    bool BuildFormulaTree(const colFormulaDB& libraries, OnUnreadable onUnreadable);

    /// Sets the reading time of BuildFormulaTree() in milliseconds; it is two seconds by itself.
    void setReadingTime(int milliseconds) { readingTime_ = milliseconds; }

    /// Whether libraries are being read while the program goes on.
    bool isReading() const { return reading_.isRunning(); }

    /// Ends that; the rest is read when it is shown.
    void stopReading();

    /// Removes every node.
    void clear();

    /// Shows the folders of the current library when they could not be read before and now can.
    void readAgain();

    /// Whether the folders shown of a library are those of the file that is at its path; true also
    /// when the tree does not have the library.
    bool isUpToDate(int library) const;

    /// Shows the folders that a library of the tree has now, read on a connection of its own, or
    /// marks its node when not all can be read; if none can, those that are shown stay. Returns
    /// what the user is to be told then, `notOpened` when the library cannot be opened; ""
    /// otherwise.
    QString readAnew(int library, const QString& notOpened);

    /// The same for a library of the tree that has not been read, or could not be; any other one
    /// stays as it is.
    QString readUnread(int library, const QString& notOpened);

    bool contains(const NodeId& node) const { return model_.find(node).isValid(); }
    /// Name of a node; "" for an unknown one.
    QString text(const NodeId& node) const;
    /// The first library; an invalid node in an empty tree.
    NodeId firstNode() const { return model_.idOf(model_.index(0, 0)); }
    /// The first library that could be read; an invalid node when there is none.
    NodeId firstReadNode() const;
    NodeId parentOf(const NodeId& node) const { return model_.idOf(model_.find(node).parent()); }
    /// The node `step` places behind another one among its siblings (before it when negative); an
    /// invalid one when there is none.
    NodeId neighbour(const NodeId& node, int step) const;
    /// How many levels of new folders can be shown below a node.
    int levelsBelow(const NodeId& node) const;

    /// Marks the node of a library, which is in the tree, when it has just not been made the
    /// current one, with the reason; takes the mark away when it has been.
    void noteOpening(int library);

    NodeId selectedNode() const;
    /// Selects a node and scrolls to it; raises no signal.
    void select(const NodeId& node);

    /// Opens the label of a folder.
    void editLabel(const NodeId& folder);

    /// Appends the first of `rows`, a new folder, to the children of a node, with the others that
    /// descend from it below it, and scrolls it into view. Returns it.
    NodeId appendFolders(const NodeId& parent, FolderRows rows);

    /// Removes a folder with everything below it; an unknown one does nothing.
    void removeFolder(const NodeId& folder);

    /// Replaces what is below a node by the folders among `rows` that descend from it; what was
    /// open there is open again. Folders have the picture of a folder, or keep their own.
    void replaceFolders(const NodeId& parent, FolderRows rows, bool keepPictures);

    /// Gives the nodes of a library that carry properties their pictures; `folders` may name 0, the
    /// library itself, and folders that the tree does not have.
    void markProperties(int library, const std::vector<qint32>& folders);

    /// Draws a node as one that carries properties, or as one that does not; an unknown one does
    /// nothing.
    void showProperties(const NodeId& node, bool carries);

    /// Draws a node as located, or as one that carries a property; an unknown one does nothing.
    void setLocated(const NodeId& node, bool located);

  signals:
    /// The user clicked a node, or reached it with the keyboard.
    void nodeClicked(const NodeId& node);
    /// So many libraries are to be read while the program goes on; 0 when that is over.
    void readingChanged(int waiting);

  private:
    QString addLibraries(const colFormulaDB& libraries, OnUnreadable onUnreadable);
    int addUnread(const clsFormulaDB& library);
    QString addLibrary(const clsFormulaDB& library);
    /// What becomes of a node whose first children are shown. One that opens by itself would move
    /// those below it away from under the user's mouse.
    enum class NewChildren { Open, StayClosed };

    QString readInto(const QModelIndex& root, CurrentLibrary& library, NewChildren opening);
    QString readFrom(CurrentLibrary& library, NewChildren opening = NewChildren::Open);
    SlicedWork::Next readNext();
    void readWaiting(int library);
    void mark(int library, const QString& reason);
    void unmark(int library);
    void removeStale(const NodeId& folder, const NodeId& kept);
    void collectExpanded(const QModelIndex& parent, std::vector<NodeId>& expanded) const;
    std::vector<std::pair<NodeId, FolderTree::Images>> markedBelow(const QModelIndex& parent) const;

    ui::NodeView& view_;
    CurrentLibrary& library_;
    Questions& questions_;
    FolderTreeModel model_;
    QSet<int> unread_;            ///< numbers of the libraries that are not read, or cannot be
    QList<int> waiting_;          ///< of them, those that are to be read
    QList<int> locked_;           ///< those that were, and are tried again when no others wait
    QDeadlineTimer lockedUntil_;  ///< when they are not any more
    SlicedWork reading_;
    int readingTime_ = 2000;
    QHash<int, FileIdentity> files_;  ///< by number, those that the shown folders were read from
    QHash<int, FolderTree::Images> unmarked_;  ///< by number, pictures of the marked libraries
};

}  // namespace varo
