#pragma once

#include <QIcon>
#include <QSize>

class QWidget;

namespace varo::ui {

/// The pictures of tree nodes and list items, by the index under which the component knows them.
enum class NodeImage {
    Library = 1,
    Folder = 2,
    FolderOpen = 3,
    LibraryWithProperty = 4,
    FolderWithProperty = 5,
    FolderWithPropertyOpen = 6,
    FolderLocated = 7,
};
enum class FormulaImage { Formula = 2, FormulaWithProperty = 12, FormulaLocated = 13 };

/// Icons drawn here, sharp at every scale; an index that has none gives an empty icon.
QIcon nodeIcon(NodeImage image);
QIcon formulaIcon(FormulaImage image);

/// Size of the icons beside the text of a widget: they grow with its font, in steps that keep their
/// lines sharp.
QSize iconSizeFor(const QWidget& widget);

/// Icon of a standard action by its freedesktop name, from the desktop's theme, else from Breeze,
/// light or dark as the application's palette asks for now.
QIcon themeIcon(const QString& name);

}  // namespace varo::ui
