#pragma once

#include <QString>
#include <QStringView>

#include <optional>

namespace varo {

/// A node of the library tree: a configured library, or a folder in one.
struct NodeId {
    int library = 0;               ///< number of the library, from 1; 0 names no node
    std::optional<qint32> folder;  ///< identifier of the folder; none for the library itself

    bool isValid() const { return library > 0; }
    constexpr bool isFolder() const { return folder.has_value(); }
    /// Identifier under which what the node contains is stored: 0 is the library's top level.
    qint32 parentId() const { return folder.value_or(0); }

    bool operator==(const NodeId&) const = default;
};

/// The node of a library under which `parentId` is stored: 0 is the library itself.
constexpr NodeId nodeOf(int library, qint32 parentId) {
    return {library, parentId == 0 ? std::nullopt : std::optional(parentId)};
}

/// Key of a node; "" for an invalid one.
QString keyOf(const NodeId& node);

/// The node with this key; an invalid one when the text is no such key.
NodeId nodeWithKey(QStringView key);

}  // namespace varo
