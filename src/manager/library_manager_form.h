#pragma once

#include <QAction>
#include <QFrame>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTabBar>
#include <QToolBar>

#include <array>

class QDialog;

namespace varo {

class LibraryListView;

/// The commands of the library manager on its list, in the order of its tool bar and its menu.
enum class ManagerCommand { New, Add, MoveUp, MoveDown, Rename, Delete };
inline constexpr int kManagerCommands = 6;

/// The named widgets of the library manager. Each carries its name as objectName; all are owned by
/// Qt's parents.
struct LibraryManagerForm {
    QMenu* mnuFile = nullptr;
    QAction* mnuExit = nullptr;
    QMenu* mnuEdit = nullptr;
    /// mnuNewDB, mnuAddDB, mnuMoveUp, mnuMoveDown, mnuRename, mnuDelDB
    std::array<QAction*, kManagerCommands> entries{};
    QFrame* cbEdit = nullptr;
    QToolBar* tbEdit = nullptr;
    /// Those of tbEdit, named by their keys; each has its rule of its own by which it is enabled.
    std::array<QAction*, kManagerCommands> buttons{};
    QLabel* lblTitle = nullptr;
    QTabBar* tbsDB = nullptr;
    LibraryListView* lvDB = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
};

/// Makes all widgets in `dialog`, with their texts, keys, order of tabs and names.
LibraryManagerForm buildLibraryManagerForm(QDialog& dialog);

}  // namespace varo
