#pragma once

#include "control/library_tree.h"
#include "editing/move_direction.h"
#include "platform/held_messages.h"

#include <QObject>

namespace varo {

/// The edit commands on the selected node of the tree. Each changes the tree only after the
/// library, and tells the user what fails.
class FolderCommands : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this. Stores the labels that are typed in the tree.
    FolderCommands(Form& form, ControlState& state, Questions& questions, LibraryTree& tree,
                   FormulaList& list);

    /// Makes a folder behind the others of the selected node, selects it and opens its label.
    void newFolder();

    /// Deletes the selected folder with all below it, when the user confirms it, and selects its
    /// parent. What was deleted before a step that fails stays deleted. Returns false when a step
    /// failed.
    bool deleteFolder();

    /// Exchanges the selected folder and its neighbour; nothing at the end of the row, which is a
    /// success.
    bool moveFolder(MoveDirection direction);

    /// Puts the selected folder with all below it into the clipboard. Returns false when it cannot
    /// be read.
    bool copyFolder();

    /// Puts a copy of the clipboard's folder behind the others of the selected node, with the
    /// folders in it when the user wants them. Returns false when a step failed; what was pasted
    /// before stays.
    bool pasteFolders();

    /// Opens the label of the selected folder.
    void renameFolder();

  private:
    struct Deletion {
        QList<qint32> gone;  ///< folders, each behind those below it
        bool complete = false;
        bool committed = false;  ///< what was done has reached the file
    };

    struct Exchanged {
        FolderRows rows;
        std::vector<qint32> withProperty;
        bool propertiesRead = false;
    };

    bool storeName(const QString& key, const QString& name);
    bool pasteBelow(const QString& target, bool withSubfolders, HeldMessages& messages);
    Deletion deleteFromLibrary(const std::vector<qint32>& folders);
    /// Adds the folder to `gone` once its row is.
    bool deleteOne(qint32 folder, QList<qint32>& gone);
    QString append(const QString& parentKey, FolderRows added);
    void forget(qint32 folder, const QString& rootKey);
    /// Exchanges two folders and reads the library's folders as they are then. Returns what the
    /// user is to be told, with the library as it was, when that fails; "" otherwise.
    QString exchange(qint32 folder, qint32 neighbour, Exchanged& now);

    Form& form_;
    ControlState& state_;
    Questions& questions_;
    LibraryTree& tree_;
    FormulaList& list_;
};

}  // namespace varo
