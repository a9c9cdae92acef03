#pragma once

#include <QString>
#include <QStringBuilder>
#include <QStringView>

namespace varo {

/// Keys and tags of tree nodes and list items: built and taken apart here alone.

inline constexpr QStringView kLibraryKeyPrefix = u"DBNode";
inline constexpr QStringView kFolderKeyPrefix = u"FormulaNode";
inline constexpr QStringView kFormulaKeyPrefix = u"LvFormulaKey";
inline constexpr QStringView kPropertyKeyPrefix = u"LvPropertyKey";
inline constexpr QStringView kVariableKeyPrefix = u"TheVar";
inline constexpr QStringView kFindKeyPrefix = u"FindItem";
inline constexpr QStringView kKeySeparator = u"->";

/// "DBNode" and the library's number.
inline QString libraryKey(int number) {
    return kLibraryKeyPrefix % QString::number(number);
}

/// "FormulaNode", the folder's identifier, "->", the key of its library.
inline QString folderKey(qint32 id, QStringView libraryKey) {
    return kFolderKeyPrefix % QString::number(id) % kKeySeparator % libraryKey;
}

/// "LvFormulaKey" and the formula's identifier.
inline QString formulaKey(qint32 id) {
    return kFormulaKeyPrefix % QString::number(id);
}

/// "LvPropertyKey" and the property's number.
inline QString propertyKey(qint32 id) {
    return kPropertyKeyPrefix % QString::number(id);
}

/// "TheVar" and a number.
inline QString variableKey(int number) {
    return kVariableKeyPrefix % QString::number(number);
}

/// Condition, node, kind of node and library of a located item, joined by "->".
inline QString locatedKey(qint32 filterID, qint32 nodeID, qint32 nodeType, QStringView libraryKey) {
    return QString::number(filterID) % kKeySeparator % QString::number(nodeID) % kKeySeparator %
           QString::number(nodeType) % kKeySeparator % libraryKey;
}

/// "FindItem" and the identifier of a found item, the key of its library and the kind of node,
/// joined by "->".
inline QString findKey(qint32 id, QStringView libraryKey, qint32 nodeType) {
    return kFindKeyPrefix % QString::number(id) % kKeySeparator % libraryKey % kKeySeparator %
           QString::number(nodeType);
}

/// Kind of node and identifier of the parent of a found item, joined by "->".
inline QString findTag(qint32 nodeType, qint32 parentID) {
    return QString::number(nodeType) % kKeySeparator % QString::number(parentID);
}

inline bool isFolderKey(QStringView key) {
    return key.contains(kFolderKeyPrefix);
}

/// Identifier of the folder with this key; 0, the library's top level, for any other key.
inline qint32 folderIdOf(QStringView key) {
    if (!key.startsWith(kFolderKeyPrefix)) {
        return 0;
    }
    const auto end = key.indexOf(kKeySeparator);
    const auto start = kFolderKeyPrefix.size();
    return key.sliced(start, (end < start ? key.size() : end) - start).toInt();
}

/// Number of the library with this key; 0 for any other key.
inline int libraryNumberOf(QStringView key) {
    return key.startsWith(kLibraryKeyPrefix) ? key.sliced(kLibraryKeyPrefix.size()).toInt() : 0;
}

/// Key of the library that the node with this key belongs to.
inline QString libraryKeyOf(QStringView key) {
    const auto at = key.startsWith(kFolderKeyPrefix) ? key.indexOf(kKeySeparator) : -1;
    return (at < 0 ? key : key.sliced(at + kKeySeparator.size())).toString();
}

/// Whether this is the key of a formula: only one spelling of a number is.
inline bool isFormulaKey(QStringView key) {
    return key.startsWith(kFormulaKeyPrefix) &&
           formulaKey(key.sliced(kFormulaKeyPrefix.size()).toInt()) == key;
}

/// Identifier of the formula with this list key; 0 for any other key.
inline qint32 formulaIdOf(QStringView key) {
    return key.startsWith(kFormulaKeyPrefix) ? key.sliced(kFormulaKeyPrefix.size()).toInt() : 0;
}

}  // namespace varo
