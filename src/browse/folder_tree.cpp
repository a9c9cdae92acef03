#include "browse/folder_tree.h"

#include <QSet>

#include <algorithm>

namespace varo {

namespace {

constexpr auto kLibraryImages = FolderTree::imagesOf(NodeImage::Library, NodeImage::Library);
constexpr auto kFolderImages = FolderTree::imagesOf(NodeImage::Folder, NodeImage::FolderOpen);

/// The part of a name that fits.
QStringView storable(QStringView name) {
    return name.first(std::min<qsizetype>(name.size(), std::numeric_limits<quint16>::max()));
}

}  // namespace

void FolderTree::clear() {
    *this = {};
}

FolderTree::Node FolderTree::addNode(Node parent, quint32 row, qint32 id, QStringView text,
                                     Images images) {
    const NodeData added{id,
                         parent,
                         row,
                         0,
                         0,
                         static_cast<quint32>(text_.size()),
                         static_cast<quint16>(text.size()),
                         images};
    text_ += text;
    if (freeNodes_.empty()) {
        nodes_.push_back(added);
        return static_cast<Node>(nodes_.size() - 1);
    }
    const Node node = freeNodes_.back();
    freeNodes_.pop_back();
    nodes_[node] = added;
    return node;
}

FolderTree::Node FolderTree::addLibrary(int number, const QString& text) {
    const Node node =
        addNode(kNone, static_cast<quint32>(libraries_.size()), 0, storable(text), kLibraryImages);
    libraries_.push_back({node, number, {}});
    return node;
}

void FolderTree::addFolders(Node parent, FolderRows rows,
                            const std::function<void(int)>& beforeShown) {
    rows.sort();
    auto& byId = libraryOf(parent).byId;
    nodes_.reserve(nodes_.size() + rows.rows().size());
    childNodes_.reserve(childNodes_.size() + rows.rows().size());
    byId.reserve(byId.size() + rows.rows().size());
    text_.reserve(text_.size() + rows.textSize());

    QSet<qint32> placed;
    placed.reserve(static_cast<qsizetype>(rows.rows().size()));
    for (const Entry& entry : byId) {
        placed.insert(entry.id);
    }
    std::vector<Node> added;
    added.reserve(rows.rows().size());
    const auto placeChildren = [&](Node above) {
        nodes_[above].childBegin = static_cast<quint32>(childNodes_.size());
        quint32 count = 0;
        for (const FolderRows::Row& row : rows.childrenOf(nodes_[above].id)) {
            if (placed.contains(row.id)) {
                continue;
            }
            placed.insert(row.id);
            const Node node = addNode(above, count++, row.id, rows.name(row), kFolderImages);
            childNodes_.push_back(node);
            byId.push_back({row.id, node});
            added.push_back(node);
        }
        return count;
    };
    // Breadth first, a level behind the other: new nodes are looked at in the order in which they
    // were added, each once, so folders that descend from themselves are never reached.
    const quint32 childCount = levelsBelow(parent) > 0 ? placeChildren(parent) : 0;
    auto nextLevel = added.size();
    int level = depth(parent) + 1;
    for (std::size_t next = 0; next < added.size(); ++next) {
        if (next == nextLevel) {
            nextLevel = added.size();
            ++level;
        }
        if (level == kMaxFolderDepth) {
            break;
        }
        const Node node = added[next];
        if (nodes_[node].id != 0) {
            nodes_[node].childCount = placeChildren(node);
        }
    }
    std::ranges::sort(byId, {}, &Entry::id);
    beforeShown(static_cast<int>(childCount));
    nodes_[parent].childCount = childCount;
}

FolderTree::Node FolderTree::appendFolder(Node parent, qint32 id, const QString& text) {
    const Node node = addNode(parent, nodes_[parent].childCount, id, storable(text), kFolderImages);
    NodeData& above = nodes_[parent];
    if (above.childBegin + above.childCount != childNodes_.size()) {
        // The block grows at the end of all blocks.
        const auto begin = static_cast<quint32>(childNodes_.size());
        for (quint32 i = 0; i < above.childCount; ++i) {
            childNodes_.push_back(childNodes_[above.childBegin + i]);
        }
        above.childBegin = begin;
        unusedPlaces_ += above.childCount;
    }
    childNodes_.push_back(node);
    ++above.childCount;
    auto& byId = libraryOf(parent).byId;
    byId.insert(std::ranges::upper_bound(byId, id, {}, &Entry::id), {id, node});
    reclaim();
    return node;
}

void FolderTree::removeFolder(Node node) {
    NodeData& above = nodes_[parent(node)];
    const auto begin = childNodes_.begin() + above.childBegin;
    std::shift_left(begin + row(node), begin + above.childCount, 1);
    --above.childCount;
    ++unusedPlaces_;
    for (quint32 i = nodes_[node].row; i < above.childCount; ++i) {
        nodes_[childNodes_[above.childBegin + i]].row = i;
    }
    Library& library = libraryOf(node);
    release(node);
    std::erase_if(library.byId,
                  [this](const Entry& entry) { return nodes_[entry.node].row == kNone; });
    reclaim();
}

void FolderTree::removeFolders(Node parent) {
    for (int i = 0; i < childCount(parent); ++i) {
        release(child(parent, i));
    }
    unusedPlaces_ += nodes_[parent].childCount;
    nodes_[parent].childCount = 0;
    std::erase_if(libraryOf(parent).byId,
                  [this](const Entry& entry) { return nodes_[entry.node].row == kNone; });
    reclaim();
}

/// Releases a node and those below it; their entries and the place among the siblings stay.
void FolderTree::release(Node node) {
    std::vector<Node> released{node};
    while (!released.empty()) {
        const Node each = released.back();
        released.pop_back();
        for (int i = 0; i < childCount(each); ++i) {
            released.push_back(child(each, i));
        }
        unusedPlaces_ += nodes_[each].childCount;
        unusedText_ += nodes_[each].textLength;
        nodes_[each] = {0, kNone, kNone, 0, 0, 0, 0, {}};
        freeNodes_.push_back(each);
    }
}

void FolderTree::setText(Node node, const QString& text) {
    const QStringView stored = storable(text);
    unusedText_ += nodes_[node].textLength;
    nodes_[node].textBegin = static_cast<quint32>(text_.size());
    nodes_[node].textLength = static_cast<quint16>(stored.size());
    text_ += stored;
    reclaim();
}

/// Packs what is in use once most of it is not.
void FolderTree::reclaim() {
    if (2 * unusedText_ > text_.size()) {
        QString packed;
        packed.reserve(text_.size() - unusedText_);
        for (NodeData& node : nodes_) {
            const auto begin = static_cast<quint32>(packed.size());
            packed += QStringView(text_).sliced(node.textBegin, node.textLength);
            node.textBegin = begin;
        }
        text_ = std::move(packed);
        unusedText_ = 0;
    }
    if (2 * unusedPlaces_ > childNodes_.size()) {
        std::vector<Node> packed;
        packed.reserve(childNodes_.size() - unusedPlaces_);
        for (NodeData& node : nodes_) {
            const auto begin = childNodes_.begin() + node.childBegin;
            node.childBegin = static_cast<quint32>(packed.size());
            packed.insert(packed.end(), begin, begin + node.childCount);
        }
        childNodes_ = std::move(packed);
        unusedPlaces_ = 0;
    }
}

int FolderTree::levelsBelow(Node node) const {
    return isLibrary(node) || nodes_[node].id != 0 ? kMaxFolderDepth - depth(node) : 0;
}

int FolderTree::depth(Node node) const {
    int levels = 0;
    for (node = parent(node); node != kNone; node = parent(node)) {
        ++levels;
    }
    return levels;
}

void FolderTree::squeeze() {
    nodes_.shrink_to_fit();
    childNodes_.shrink_to_fit();
    text_.squeeze();
}

FolderTree::Node FolderTree::child(Node node, int position) const {
    return childNodes_[nodes_[node].childBegin + static_cast<quint32>(position)];
}

QString FolderTree::text(Node node) const {
    return text_.sliced(nodes_[node].textBegin, nodes_[node].textLength);
}

FolderTree::Library& FolderTree::libraryOf(Node node) {
    while (nodes_[node].parent != kNone) {
        node = nodes_[node].parent;
    }
    return libraries_[nodes_[node].row];
}

const FolderTree::Library& FolderTree::libraryOf(Node node) const {
    return const_cast<FolderTree*>(this)->libraryOf(node);
}

NodeId FolderTree::id(Node node) const {
    const int library = libraryOf(node).number;
    return isLibrary(node) ? NodeId{library, std::nullopt} : NodeId{library, nodes_[node].id};
}

FolderTree::Node FolderTree::find(const NodeId& id) const {
    const auto library = std::ranges::find(libraries_, id.library, &Library::number);
    if (library == libraries_.end()) {
        return kNone;
    }
    if (!id.isFolder()) {
        return library->node;
    }
    const auto entry = std::ranges::lower_bound(library->byId, *id.folder, {}, &Entry::id);
    return entry != library->byId.end() && entry->id == *id.folder ? entry->node : kNone;
}

}  // namespace varo
