#pragma once

#include <QString>
#include <QStringBuilder>
#include <QStringView>

namespace varo {

/// Keys and tags of tree nodes and list items: built and taken apart here alone.

inline constexpr QStringView RootNodeTag = u"RootNode";
inline constexpr QStringView FolderTag = u"FormulaNode";
inline constexpr QStringView LibraryKeyPrefix = u"DBNode";
inline constexpr QStringView FolderKeyPrefix = u"FormulaNode";
inline constexpr QStringView FormulaKeyPrefix = u"LvFormulaKey";
inline constexpr QStringView PropertyKeyPrefix = u"LvPropertyKey";
inline constexpr QStringView VariableKeyPrefix = u"TheVar";
inline constexpr QStringView KeySeparator = u"->";

/// "DBNode" and the library's number.
inline QString libraryKey(int number) {
    return LibraryKeyPrefix % QString::number(number);
}

/// "FormulaNode", the folder's identifier, "->", the key of its library.
inline QString folderKey(qint32 id, QStringView libraryKey) {
    return FolderKeyPrefix % QString::number(id) % KeySeparator % libraryKey;
}

/// "LvFormulaKey" and the formula's identifier.
inline QString formulaKey(qint32 id) {
    return FormulaKeyPrefix % QString::number(id);
}

/// "LvPropertyKey" and the property's number.
inline QString propertyKey(qint32 id) {
    return PropertyKeyPrefix % QString::number(id);
}

/// "TheVar" and a number.
inline QString variableKey(int number) {
    return VariableKeyPrefix % QString::number(number);
}

/// Condition, node, kind of node and library of a located item, joined by "->".
inline QString locatedKey(qint32 filterID, qint32 nodeID, qint32 nodeType, QStringView libraryKey) {
    return QString::number(filterID) % KeySeparator % QString::number(nodeID) % KeySeparator %
           QString::number(nodeType) % KeySeparator % libraryKey;
}

inline bool isFolderKey(QStringView key) {
    return key.contains(FolderKeyPrefix);
}
inline bool isFormulaKey(QStringView key) {
    return key.contains(FormulaKeyPrefix);
}

/// Identifier of the folder with this key; 0, the library's top level, for any other key.
inline qint32 folderIdOf(QStringView key) {
    if (!key.startsWith(FolderKeyPrefix)) {
        return 0;
    }
    const auto end = key.indexOf(KeySeparator);
    const auto start = FolderKeyPrefix.size();
    return key.sliced(start, (end < start ? key.size() : end) - start).toInt();
}

/// Number of the library with this key; 0 for any other key.
inline int libraryNumberOf(QStringView key) {
    return key.startsWith(LibraryKeyPrefix) ? key.sliced(LibraryKeyPrefix.size()).toInt() : 0;
}

/// Key of the library that the node with this key belongs to.
inline QString libraryKeyOf(QStringView key) {
    const auto at = key.startsWith(FolderKeyPrefix) ? key.indexOf(KeySeparator) : -1;
    return (at < 0 ? key : key.sliced(at + KeySeparator.size())).toString();
}

/// Identifier of the formula with this list key; 0 for any other key.
inline qint32 formulaIdOf(QStringView key) {
    return key.startsWith(FormulaKeyPrefix) ? key.sliced(FormulaKeyPrefix.size()).toInt() : 0;
}

}  // namespace varo
