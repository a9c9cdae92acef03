#include "platform/data/access/index_tree.h"

#include "platform/data/access/index_entries.h"
#include "platform/data/access/index_scan.h"

#include <algorithm>
#include <iterator>

namespace varo::access {

namespace {

constexpr int kMostLevels = 32;
constexpr int kOwner = 4;
constexpr std::size_t kLeastChildren = 2;

/// The child below which `entry` is or belongs.
std::size_t childFor(const IndexPage& node, const QByteArray& entry) {
    const auto found = std::find_if(
        node.children.begin(), node.children.end(),
        [&](const IndexChild& child) { return child.bound.isEmpty() || child.bound >= entry; });
    return static_cast<std::size_t>(std::min(found, node.children.end() - 1) -
                                    node.children.begin());
}

template <class T>
std::vector<T> takeFrom(std::vector<T>& all, std::size_t first) {
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(std::min(first, all.size()));
    std::vector<T> rest(std::make_move_iterator(begin), std::make_move_iterator(all.end()));
    all.erase(begin, all.end());
    return rest;
}

std::size_t leastCount(const IndexPage& page) {
    return page.isNode ? kLeastChildren : 1;
}

/// The number of the entries or children that are at most half of the page.
std::size_t halfOf(const IndexPage& page) {
    const std::vector<QByteArray> stored = page.storedEntries();
    qsizetype all = 0;
    for (const QByteArray& entry : stored) {
        all += entry.size();
    }
    const std::size_t least = leastCount(page);
    if (page.count() < 2 * least) {
        throwDamaged("an entry of an index is too long");
    }
    std::size_t count = 0;
    for (qsizetype used = 0; count < stored.size() && used + stored[count].size() <= all / 2;) {
        used += stored[count++].size();
    }
    return std::clamp(count, least, page.count() - least);
}

/// The page in as many as it needs. An entry that does not begin as the others do can need several,
/// since then each of them is stored whole.
std::vector<IndexPage> fittingPages(const Layout& layout, const IndexPage& page, bool isAppended) {
    if (usedBytes(page) <= roomForEntries(layout)) {
        return {page};
    }
    // Where entries only ever come at the end, the pages before stay full.
    const std::size_t count = isAppended ? page.count() - leastCount(page) : halfOf(page);
    IndexPage left = page;
    IndexPage right = page;
    right.entries = takeFrom(left.entries, count);
    right.children = takeFrom(left.children, count);
    std::vector<IndexPage> pages = fittingPages(layout, left, false);
    for (IndexPage& piece : fittingPages(layout, right, false)) {
        pages.push_back(std::move(piece));
    }
    return pages;
}

}  // namespace

IndexTree::IndexTree(PageFile& file, const TableDefinition& table, const Index& index)
    : file_(file), owner_(table.page), root_(index.root), pages_(index.pages) {}

IndexPage IndexTree::read(PageNumber number) const {
    const Page page = file_.page(number);
    IndexPage found = readIndexPage(file_.layout(), Bytes(*page));
    if (found.owner != owner_) {
        throwDamaged("a page of an index belongs to another table");
    }
    return found;
}

void IndexTree::write(PageNumber number, const IndexPage& page) {
    writeIndexPage(file_.layout(), page, file_.change(number));
}

PageNumber IndexTree::addPage() {
    const PageNumber number = file_.add();
    setMarked(file_, pages_, number, true);
    return number;
}

void IndexTree::releasePage(PageNumber number) {
    setMarked(file_, pages_, number, false);
    file_.release(number);
}

bool IndexTree::contains(const QByteArray& key, RowPlace except) const {
    IndexScan scan(file_, root_, key);
    while (scan.next() && scan.key().startsWith(key)) {
        const RowPlace place = scan.place();
        if (scan.key() == key && (place.page != except.page || place.row != except.row)) {
            return true;
        }
    }
    return false;
}

void IndexTree::insert(const QByteArray& key, RowPlace place) {
    if (key.size() > kLongestKey) {
        throw data::Error(QStringLiteral("the values are too long for an index"));
    }
    if (!apply({true, indexEntry(key, place.page, place.row)})) {
        throwDamaged("an index has a row twice");
    }
}

bool IndexTree::remove(const QByteArray& key, RowPlace place) {
    return apply({false, indexEntry(key, place.page, place.row)});
}

bool IndexTree::apply(const Change& change) {
    if (const auto isDone = applyInPlace(change)) {
        return *isDone;
    }
    // The tree is not touched when there is nothing to change.
    const qsizetype keyLength = change.entry.size() - 4;
    IndexScan scan(file_, root_, change.entry);
    const bool isThere =
        scan.next() && scan.key() == change.entry.left(keyLength) &&
        indexEntry(scan.key(), scan.place().page, scan.place().row) == change.entry;
    if (isThere == change.isInserted) {
        return false;
    }
    storeRoot(applyBelow(root_, change, 0));
    return true;
}

/// Changes a leaf only, where it has room and its bound stays. Returns whether there was something
/// to change; nothing when more than that leaf is concerned.
std::optional<bool> IndexTree::applyInPlace(const Change& change) {
    const Layout& layout = file_.layout();
    PageNumber number = root_;
    for (int level = 0; level < kMostLevels; ++level) {
        const Page page = file_.page(number);
        const Bytes bytes(*page);
        const IndexEntries entries(layout, bytes);
        const int position = entries.firstNotBefore(change.entry);
        if (entries.isNode()) {
            number =
                position < entries.end() ? entries.child(position) : bytes.u32(layout.indexTail);
            if (number == 0) {
                return std::nullopt;
            }
            continue;
        }
        if (bytes.u32(kOwner) != owner_) {
            throwDamaged("a page of an index belongs to another table");
        }
        const bool isThere = position < entries.end() && entries.at(position) == change.entry;
        if (isThere == change.isInserted) {
            return position < entries.end() ? std::optional(false) : std::nullopt;
        }
        char* changed = file_.change(number);
        const bool isDone = change.isInserted
                                ? entries.insertInPlace(layout, changed, position, change.entry)
                                : entries.removeInPlace(layout, changed, position);
        return isDone ? std::optional(true) : std::nullopt;
    }
    throwDamaged("an index has too many levels");
}

/// Changes the page and those below it. Returns what the parent has in place of it: nothing when it
/// was released, two pages when it was split.
std::vector<IndexChild> IndexTree::applyBelow(PageNumber number, const Change& change, int level) {
    if (level == kMostLevels) {
        throwDamaged("an index has too many levels");
    }
    IndexPage page = read(number);
    bool isAppended = false;
    if (page.isNode) {
        isAppended = page.next == 0 && childFor(page, change.entry) + 1 == page.children.size();
        changeNode(page, change, level);
    } else {
        const auto at = std::lower_bound(page.entries.begin(), page.entries.end(), change.entry);
        isAppended = page.next == 0 && at == page.entries.end();
        if (change.isInserted) {
            page.entries.insert(at, change.entry);
        } else if (at != page.entries.end() && *at == change.entry) {
            page.entries.erase(at);
        } else {
            throwDamaged("the bounds of an index are wrong");
        }
    }
    if (page.count() == 0 && number != root_) {
        unlink(number, page);
        return {};
    }
    return store(number, page, isAppended && change.isInserted);
}

void IndexTree::changeNode(IndexPage& node, const Change& change, int level) {
    if (node.children.empty()) {
        throwDamaged("a node of an index has no page below it");
    }
    const std::size_t at = childFor(node, change.entry);
    const bool isLast = node.children[at].bound.isEmpty();
    std::vector<IndexChild> found = applyBelow(node.children[at].page, change, level + 1);
    const auto place = node.children.begin() + static_cast<std::ptrdiff_t>(at);
    node.children.insert(node.children.erase(place), found.begin(), found.end());
    if (node.children.empty()) {
        return;
    }
    for (std::size_t i = 0; i + 1 < node.children.size(); ++i) {
        if (node.children[i].bound.isEmpty()) {
            throwDamaged("a page of an index has no bound");
        }
    }
    if (isLast) {
        node.children.back().bound.clear();
    }
    if (!change.isInserted) {
        joinNeighbours(node, std::min(at, node.children.size() - 1));
    }
}

std::vector<IndexChild> IndexTree::store(PageNumber number, const IndexPage& page,
                                         bool isAppended) {
    std::vector<IndexPage> pages = fittingPages(file_.layout(), page, isAppended);
    std::vector<PageNumber> numbers{number};
    while (numbers.size() < pages.size()) {
        numbers.push_back(addPage());
    }
    if (pages.size() > 1 && page.next != 0) {
        IndexPage next = read(page.next);
        next.previous = numbers.back();
        write(page.next, next);
    }
    std::vector<IndexChild> stored;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        pages[i].previous = i == 0 ? page.previous : numbers[i - 1];
        pages[i].next = i + 1 == pages.size() ? page.next : numbers[i + 1];
        write(numbers[i], pages[i]);
        stored.push_back({pages[i].bound(), numbers[i]});
    }
    return stored;
}

/// Takes the page out of the chain of its level and releases it.
void IndexTree::unlink(PageNumber number, const IndexPage& page) {
    if (page.previous != 0) {
        IndexPage previous = read(page.previous);
        previous.next = page.next;
        write(page.previous, previous);
    }
    if (page.next != 0) {
        IndexPage next = read(page.next);
        next.previous = page.previous;
        write(page.next, next);
    }
    releasePage(number);
}

/// Joins the child `changed` of the node with one beside it when they have become small.
void IndexTree::joinNeighbours(IndexPage& node, std::size_t changed) {
    if (changed > 0 && join(node, changed - 1)) {
        return;
    }
    if (changed + 1 < node.children.size()) {
        join(node, changed);
    }
}

/// Joins the children `left` and the one behind it where that leaves room on the page; a node with
/// one child only gets some of those of the other one. False when both stay as they are.
bool IndexTree::join(IndexPage& node, std::size_t left) {
    IndexChild& first = node.children[left];
    IndexChild& second = node.children[left + 1];
    IndexPage page = read(first.page);
    const IndexPage other = read(second.page);
    // Not every program makes a chain of the nodes.
    if (page.isNode != other.isNode ||
        (!page.isNode && (page.next != second.page || other.previous != first.page))) {
        throwDamaged("the pages of an index are not in a row");
    }
    const bool isTooSmall = page.isNode && std::min(page.count(), other.count()) < kLeastChildren;
    page.entries.insert(page.entries.end(), other.entries.begin(), other.entries.end());
    page.children.insert(page.children.end(), other.children.begin(), other.children.end());
    const int room = roomForEntries(file_.layout());
    if (usedBytes(page) <= (isTooSmall ? room : room / 2)) {
        unlink(second.page, other);
        page.next = other.next;
        write(first.page, page);
        first.bound = second.bound;
        node.children.erase(node.children.begin() + static_cast<std::ptrdiff_t>(left) + 1);
        return true;
    }
    if (!isTooSmall) {
        return false;
    }
    // One child is enough, and without it the other page has room all the same.
    IndexPage rest = other;
    const std::size_t all = page.count();
    rest.children = takeFrom(
        page.children, other.count() < kLeastChildren ? all - kLeastChildren : kLeastChildren);
    first.bound = page.bound();
    write(first.page, page);
    write(second.page, rest);
    return true;
}

/// The root keeps its page: when it was split, its content moves to a page below it; a single page
/// below it is taken into it.
void IndexTree::storeRoot(std::vector<IndexChild> children) {
    if (children.size() > 1) {
        const IndexPage below = read(root_);
        const PageNumber added = addPage();
        IndexPage next = read(below.next);
        next.previous = added;
        write(below.next, next);
        write(added, below);
        children.front().page = added;
        children.back().bound.clear();
        IndexPage root;
        root.isNode = true;
        root.owner = owner_;
        root.children = std::move(children);
        storeRoot(store(root_, root, false));
        return;
    }
    for (IndexPage root = read(root_); root.isNode && root.children.size() < kLeastChildren;
         root = read(root_)) {
        if (root.children.empty()) {
            IndexPage empty;
            empty.owner = owner_;
            write(root_, empty);
            return;
        }
        const PageNumber below = root.children.front().page;
        write(root_, read(below));
        releasePage(below);
    }
}

}  // namespace varo::access
