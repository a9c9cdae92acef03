#pragma once

#include <QString>

/// The record types of the collections. The key that a collection makes for a record is constant.

namespace varo {

/// A configured library.
struct clsFormulaDB {
    QString FormulaNodeText;  ///< text of the library's root node
    QString Tag;              ///< free text
    const QString NodeKey;    ///< key of the root node, made by colFormulaDB::Add
    QString FormulaDBPath;    ///< folder of the library file, with its trailing separator
    QString FormulaDBName;    ///< file name of the library
};

/// Where a formula's picture is.
enum PictureType { PictureNone = 0, PictureStored = 2 };

/// A formula of the listed folder.
struct clsFormulaInfo {
    qint32 FormulaID = 0;
    QString FormulaName;
    QString FormulaExpression;
    QString FormulaMemo;
    QString FormulaPicPath;  ///< picture file written out for display, "" when there is none
    qint32 FormulaPicType = PictureNone;
    qint32 FormulaPID = 0;  ///< identifier of the folder, 0 for the library's top level
    const QString NodeKey;  ///< key of the formula's list item
    QString Tag;            ///< free text
};

/// A folder.
struct clsNodeInfo {
    QString TheTag;            ///< free text
    qint32 FartherNodeID = 0;  ///< identifier of the parent folder, 0 for the library's top level
    QString RootNodeKey;       ///< key of the library's root node
    QString FileName;          ///< file name of the library
    QString FilePath;          ///< folder of the library file
    const QString TheKey;      ///< the folder's tree key
    QString NodeName;
    qint32 NodeID = 0;
};

/// A property attached to a folder or formula.
struct clsProperty {
    QString Tag;            ///< free text
    qint32 OptType = 0;     ///< kind of property
    const QString NodeKey;  ///< the property's key
    qint32 FilterID = 0;
    QString PropName;
    qint32 PropID = 0;
};

/// Where a variable's value comes from.
enum VarSource { VarSourceTyped = 0, VarSourceProperty = 1, VarSourceTable = 2 };

/// A variable of a formula, as stored.
struct clsVarInfo {
    qint32 FormulaID = 0;  ///< 0: the record belongs to no formula
    const QString Key;
    QString Tag;
    QString VarMemo;           ///< the source's parameter: property name, or database->table
    qint32 VarSourceType = 0;  ///< a VarSource
    QString VarValue;
    const QString VarName;  ///< constant too: colVarInfo finds records by it
};

/// A located folder or formula.
struct clsLocateProp {
    QString Tag;      ///< free text
    QString RootKey;  ///< key of the library's root node
    const QString Key;
    qint32 PID = 0;       ///< identifier of the parent
    qint32 NodeType = 0;  ///< 1 folder, 2 formula
    qint32 NodeID = 0;
    qint32 FilterID = 0;  ///< the condition that matched
};

}  // namespace varo
