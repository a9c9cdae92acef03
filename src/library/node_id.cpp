#include "library/node_id.h"

#include "store/keys.h"

namespace varo {

QString keyOf(const NodeId& node) {
    if (!node.isValid()) {
        return {};
    }
    const QString library = libraryKey(node.library);
    return node.isFolder() ? folderKey(*node.folder, library) : library;
}

NodeId nodeWithKey(QStringView key) {
    NodeId node{libraryNumberOf(libraryKeyOf(key)), std::nullopt};
    if (isFolderKey(key)) {
        node.folder = folderIdOf(key);
    }
    // Only one spelling of a number is a key.
    return keyOf(node) == key ? node : NodeId{};
}

}  // namespace varo
