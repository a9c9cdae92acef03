#pragma once

#include "library/current_library.h"
#include "library/property_source.h"
#include "library/working_files.h"

#include <QWidget>

#include <optional>

namespace varo {

/// What the property-conditions dialog is opened on.
struct PropertyTarget {
    int library = 0;  ///< number of the configured library
    qint32 node = 0;  ///< a folder, 0 for the library itself, or a formula
    NodeType type = NodeTypeFolder;
    QString title;  ///< of the dialog
    QString name;   ///< of the node
};

/// Opens the property-conditions dialog on a node of a library. The current library is closed, and
/// its connection lent to the dialog, meanwhile; after it the library of the node is the current
/// one.
class PropertyEditor {
  public:
    /// The dialog opens over `window`. `files` names the folder in which the library is backed up;
    /// where that is a temporary one, the backup lies in a lasting folder of the user's. Everything
    /// handed in must outlive this.
    PropertyEditor(CurrentLibrary& library, const WorkingFiles& files, PropertySource& properties,
                   Questions& questions, QWidget& window)
        : library_(library),
          files_(files),
          properties_(properties),
          questions_(questions),
          window_(window) {}

    /// Returns how many properties the node has when the user has changed them; nothing when it is
    /// as it was, the dialog is open already or there is no such library. What fails is told.
    /// Nothing, without touching this, when the window was destroyed meanwhile; what the user did
    /// in the dialog is then taken back.
    std::optional<int> edit(const PropertyTarget& target);

  private:
    void reopen(int number);
    QString settledFolder();

    CurrentLibrary& library_;
    const WorkingFiles& files_;
    PropertySource& properties_;
    Questions& questions_;
    QWidget& window_;
    bool isOpen_ = false;
};

}  // namespace varo
