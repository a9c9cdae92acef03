#pragma once

#include "platform/data/connection.h"
#include "store/collections.h"
#include "store/db_funcs.h"

#include <QString>

namespace varo {

/// What copy has put aside: a folder with all below it, or a formula, as they were then.
struct Clipboard {
    enum Kind { Empty = 0, Folders = 1, Formula = 2 };
    QString key;
    int kind = Empty;
    colFormulaInfo folders;   ///< the copied one first, each behind the one that it is in
    colFormulaInfo formulas;  ///< in the order of their folders, then of their list

    bool holdsFolders() const { return kind == Folders && folders.Count() > 0; }
    bool holdsFormula() const { return kind == Formula && formulas.Count() > 0; }

    /// Empties it and removes the files of the copied pictures.
    void clear() {
        key.clear();
        kind = Empty;
        folders.Clear();
        formulas.Clear();
    }
};

/// What is selected, and so which edit commands are offered. Any other number offers none.
enum class CommandState : int {
    Nothing = 1,
    LibrarySelected = 2,
    FolderSelected = 3,
    FormulaSelected = 4,
    NoFormula = 5
};

/// The tree node or list item that is drawn highlighted as located.
struct LocateHighlight {
    enum Kind { None = 0, Node = 1, Item = 2 };
    bool set = false;
    int kind = None;
    QString key;
};

/// The host's cell: six numbers that the control only keeps.
struct CellInfo {
    qint32 UnitContentID = 0;
    qint32 UnitTypeID = 0;
    qint32 PrptysetID = 0;
    qint32 RecordsetID = 0;
    qint32 FieldID = 0;
    qint32 RecNum = 0;
};

/// What the parts of the control share. Owned by the control for its whole life.
struct ControlState {
    explicit ControlState(Questions& questions) : dbFuncs(questions) {}

    QString configurationFolder;  ///< folder of the configuration file, as the host gave it
    QString workFolder;           ///< folder of the working picture files, with its separator
    bool started = false;         ///< RunCalc has built the tree
    colFormulaDB libraries;       ///< in the order of the configuration file
    clsDBFuncs dbFuncs;
    data::Connection connection;  ///< of the current library
    QString currentLibraryPath;   ///< folder of the library that the connection has open
    QString currentLibraryName;   ///< its file name
    colFormulaInfo listedFormulas;
    QString listedLibrary;  ///< currentLibrary() when the formulas were listed
    QString listedNodeKey;  ///< tree node whose formulas are listed; "" when none is
    colVarInfo variables;   ///< stored variables seen so far; emptied with every change of library
    ColNodeInfo folders;
    colLocateProp located;
    Clipboard clipboard;
    QString currentItemKey;     ///< tree node or list item last selected
    QString currentFormulaKey;  ///< formula last shown
    CommandState commandState = CommandState::Nothing;
    bool formulaSelected = false;  ///< a formula of the list is selected
    QString pendingLocateRequest;
    LocateHighlight highlight;
    QString locationPropName;  ///< argument of the last SetDesignProp
    QString hostValue;         ///< the host's answer to GetPropValue
    CellInfo cell;

    /// Path of the library that the connection has open.
    QString currentLibrary() const { return currentLibraryPath + currentLibraryName; }

    /// Whether what is edited of the listed formulas would reach the library that they came from.
    bool listsCurrentLibrary() const { return listedLibrary == currentLibrary(); }
};

/// The one question to the host: the value of a property that only it knows.
class PropertySource {
  public:
    virtual ~PropertySource() = default;

    /// The host's value as text; "" when the host has none.
    virtual QString propertyValue(const QString& name) = 0;
};

}  // namespace varo
