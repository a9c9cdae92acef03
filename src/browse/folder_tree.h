#pragma once

#include "browse/node_images.h"
#include "library/folder_rows.h"
#include "library/node_id.h"

#include <QString>

#include <functional>
#include <limits>
#include <vector>

namespace varo {

/// Libraries and their folders, as the tree pane shows them: names, order and pictures. Holds about
/// forty bytes a folder over its text, so that libraries of many thousand folders stay small.
class FolderTree {
  public:
    /// Number of a node; valid until the node is removed, then given out again.
    using Node = quint32;
    static constexpr Node kNone = std::numeric_limits<Node>::max();

    /// Pictures of a node: as it is, and while it is selected (indices of the image list).
    struct Images {
        quint8 image;
        quint8 selectedImage;
        bool operator==(const Images&) const = default;
    };
    static constexpr Images imagesOf(NodeImage image, NodeImage selected) {
        return {static_cast<quint8>(image), static_cast<quint8>(selected)};
    }

    void clear();

    /// Appends the root node of the library with this number.
    Node addLibrary(int number, const QString& text);

    /// Places below `parent`, which has no children yet, the folders of its library that descend
    /// from it. Each row is placed once at most: folders that descend from themselves or from a
    /// missing parent, a second folder with the same identifier, and folders more than
    /// kMaxFolderDepth levels deep are left out. `beforeShown` is
    /// told the number of new children just before `parent` shows them.
    void addFolders(Node parent, FolderRows rows, const std::function<void(int)>& beforeShown);

    /// Appends a folder without children below `parent`. It must not be there yet.
    Node appendFolder(Node parent, qint32 id, const QString& text);

    /// Removes a folder, or what is below a node, with everything below that.
    void removeFolder(Node node);
    void removeFolders(Node parent);

    void setText(Node node, const QString& text);

    /// How many levels of folders can be placed below a node: none at the deepest level, and none
    /// below a stored folder with the identifier 0, which means the top level.
    int levelsBelow(Node node) const;

    /// Gives back the memory that was set aside for growth.
    void squeeze();

    int libraryCount() const { return static_cast<int>(libraries_.size()); }
    Node library(int position) const { return libraries_[static_cast<std::size_t>(position)].node; }

    int childCount(Node node) const { return static_cast<int>(nodes_[node].childCount); }
    Node child(Node node, int position) const;
    /// The node above; kNone for a library.
    Node parent(Node node) const { return nodes_[node].parent; }
    /// Position among the siblings, from 0.
    int row(Node node) const { return static_cast<int>(nodes_[node].row); }

    bool isLibrary(Node node) const { return nodes_[node].parent == kNone; }
    NodeId id(Node node) const;
    QString text(Node node) const;

    Images images(Node node) const { return nodes_[node].images; }
    void setImages(Node node, Images images) { nodes_[node].images = images; }

    /// The node with this identifier; kNone when there is none.
    Node find(const NodeId& id) const;

  private:
    struct NodeData {
        qint32 id;
        Node parent;
        quint32 row;
        quint32 childBegin;  ///< in childNodes_
        quint32 childCount;
        quint32 textBegin;
        quint16 textLength;
        Images images;
    };
    struct Entry {
        qint32 id;
        Node node;
    };
    struct Library {
        Node node;
        int number;
        std::vector<Entry> byId;  ///< ascending
    };

    Node addNode(Node parent, quint32 row, qint32 id, QStringView text, Images images);
    Library& libraryOf(Node node);
    const Library& libraryOf(Node node) const;
    int depth(Node node) const;
    void release(Node node);
    void reclaim();

    std::vector<NodeData> nodes_;
    std::vector<Node> freeNodes_;   ///< removed ones; their row is kNone
    std::vector<Node> childNodes_;  ///< a block for each parent
    std::size_t unusedPlaces_ = 0;  ///< in childNodes_
    qsizetype unusedText_ = 0;      ///< in text_
    std::vector<Library> libraries_;
    QString text_;
};

}  // namespace varo
