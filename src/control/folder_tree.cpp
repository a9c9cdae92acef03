#include "control/folder_tree.h"

#include "store/keys.h"

#include <QSet>

#include <algorithm>

namespace varo {

namespace {

constexpr auto LibraryImages = FolderTree::imagesOf(ui::NodeImage::Library, ui::NodeImage::Library);
constexpr auto FolderImages =
    FolderTree::imagesOf(ui::NodeImage::Folder, ui::NodeImage::FolderOpen);

}  // namespace

void FolderRows::add(qint32 id, qint32 parentId, qint32 order, QStringView name) {
    name = name.first(std::min<qsizetype>(name.size(), std::numeric_limits<quint16>::max()));
    rows_.push_back({id, parentId, order, static_cast<quint32>(text_.size()),
                     static_cast<quint16>(name.size())});
    text_ += name;
}

void FolderRows::sort() {
    const auto key = [](const Row& row) { return std::pair(row.parentId, row.order); };
    std::ranges::stable_sort(rows_, {}, key);
}

std::span<const FolderRows::Row> FolderRows::childrenOf(qint32 parentId) const {
    const auto range = std::ranges::equal_range(rows_, parentId, {}, &Row::parentId);
    return {range.begin(), range.end()};
}

QStringView FolderRows::name(const Row& row) const {
    return QStringView(text_).sliced(row.textBegin, row.textLength);
}

void FolderTree::clear() {
    *this = {};
}

FolderTree::Node FolderTree::addNode(Node parent, quint32 row, qint32 id, QStringView text,
                                     Images images) {
    nodes_.push_back({id, parent, row, 0, 0, static_cast<quint32>(text_.size()),
                      static_cast<quint16>(text.size()), images});
    text_ += text;
    return static_cast<Node>(nodes_.size() - 1);
}

FolderTree::Node FolderTree::addLibrary(const QString& key, const QString& text) {
    const auto shown = QStringView(text).first(
        std::min<qsizetype>(text.size(), std::numeric_limits<quint16>::max()));
    const Node node =
        addNode(None, static_cast<quint32>(libraries_.size()), 0, shown, LibraryImages);
    libraries_.push_back({node, key, {}});
    return node;
}

void FolderTree::addFolders(Node parent, FolderRows rows,
                            const std::function<void(int)>& beforeShown) {
    rows.sort();
    auto& byId = std::ranges::find(libraries_, rootKey(parent), &Library::key)->byId;
    nodes_.reserve(nodes_.size() + rows.rows().size());
    childNodes_.reserve(childNodes_.size() + rows.rows().size());
    byId.reserve(byId.size() + rows.rows().size());
    text_.reserve(text_.size() + rows.textSize());

    QSet<qint32> placed;
    placed.reserve(static_cast<qsizetype>(rows.rows().size()));
    for (const Entry& entry : byId) {
        placed.insert(entry.id);
    }
    const auto placeChildren = [&](Node above) {
        nodes_[above].childBegin = static_cast<quint32>(childNodes_.size());
        quint32 count = 0;
        for (const FolderRows::Row& row : rows.childrenOf(nodes_[above].id)) {
            if (placed.contains(row.id)) {
                continue;
            }
            placed.insert(row.id);
            const Node node = addNode(above, count++, row.id, rows.name(row), FolderImages);
            childNodes_.push_back(node);
            byId.push_back({row.id, node});
        }
        return count;
    };
    // Breadth first, a level behind the other: new nodes are looked at in the order of their
    // numbers, each once, so folders that descend from themselves are never reached.
    const auto firstNew = static_cast<Node>(nodes_.size());
    const quint32 childCount = placeChildren(parent);
    auto nextLevel = static_cast<Node>(nodes_.size());
    int depth = 1;
    for (Node node = firstNew; node < nodes_.size(); ++node) {
        if (node == nextLevel) {
            nextLevel = static_cast<Node>(nodes_.size());
            if (++depth == MaxDepth) {
                break;
            }
        }
        // Identifier 0 means the top level: a stored folder that carries it has no children of its
        // own.
        if (nodes_[node].id != 0) {
            nodes_[node].childCount = placeChildren(node);
        }
    }
    std::ranges::sort(byId, {}, &Entry::id);
    beforeShown(static_cast<int>(childCount));
    nodes_[parent].childCount = childCount;
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

const FolderTree::Library& FolderTree::libraryOf(Node node) const {
    while (nodes_[node].parent != None) {
        node = nodes_[node].parent;
    }
    return libraries_[nodes_[node].row];
}

QString FolderTree::rootKey(Node node) const {
    return libraryOf(node).key;
}

QString FolderTree::key(Node node) const {
    return isLibrary(node) ? rootKey(node) : folderKey(id(node), rootKey(node));
}

QStringView FolderTree::tag(Node node) const {
    return isLibrary(node) ? RootNodeTag : FolderTag;
}

FolderTree::Node FolderTree::find(QStringView key) const {
    const QString rootKey = libraryKeyOf(key);
    const auto library = std::ranges::find(libraries_, rootKey, &Library::key);
    if (library == libraries_.end()) {
        return None;
    }
    if (!isFolderKey(key)) {
        return library->node;
    }
    const Node node = findFolder(library->node, folderIdOf(key));
    return node != None && this->key(node) == key ? node : None;
}

FolderTree::Node FolderTree::findFolder(Node library, qint32 id) const {
    const auto& byId = libraries_[nodes_[library].row].byId;
    const auto entry = std::ranges::lower_bound(byId, id, {}, &Entry::id);
    return entry != byId.end() && entry->id == id ? entry->node : None;
}

}  // namespace varo
