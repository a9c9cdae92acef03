#include "platform/data/access/index_key.h"
#include "platform/data/access/index_scan.h"
#include "platform/data/access/index_tree.h"
#include "platform/data/access/row.h"

#include <algorithm>
#include <set>

namespace varo::access {

namespace {

constexpr int kMostLevels = 32;

/// Goes through the pages of a tree, level by level from left to right.
class TreeCheck {
  public:
    TreeCheck(PageFile& file, const TableDefinition& table, const Index& index)
        : file_(file), owner_(table.page), index_(index) {}

    QStringList findings() {
        std::vector<IndexChild> level{{{}, index_.root}};
        for (int depth = 0; !level.empty() && depth < kMostLevels; ++depth) {
            level = checkLevel(level);
        }
        if (!level.empty()) {
            add("the tree has too many levels");
        }
        checkMap();
        return findings_;
    }

  private:
    void add(const char* what) {
        if (findings_.size() < kMostFindings) {
            findings_.append(QLatin1StringView(what));
        }
    }

    /// Checks the pages of a level; gives those of the level below.
    std::vector<IndexChild> checkLevel(const std::vector<IndexChild>& level) {
        std::vector<IndexChild> below;
        QByteArray last;
        bool isNode = false;
        for (std::size_t i = 0; i < level.size(); ++i) {
            if (!seen_.insert(level[i].page).second) {
                add("a page is twice in the tree");
                continue;
            }
            const Page bytes = file_.page(level[i].page);
            const IndexPage page = readIndexPage(file_.layout(), Bytes(*bytes));
            isNode = i == 0 ? page.isNode : isNode;
            if (page.isNode != isNode) {
                add("the leaves are not on one level");
                continue;
            }
            checkPage(page, level, i, last);
            last = level[i].bound.isEmpty() ? page.bound() : level[i].bound;
            below.insert(below.end(), page.children.begin(), page.children.end());
        }
        return below;
    }

    void checkPage(const IndexPage& page, const std::vector<IndexChild>& level, std::size_t at,
                   const QByteArray& last) {
        if (page.owner != owner_) {
            add("a page belongs to another table");
        }
        // Nodes need no chain, and not every program makes one for them.
        const PageNumber previous = at == 0 ? 0 : level[at - 1].page;
        const PageNumber next = at + 1 == level.size() ? 0 : level[at + 1].page;
        if (!page.isNode && (page.previous != previous || page.next != next)) {
            add("the chain of the leaves is broken");
        }
        if (page.count() == 0 && (page.isNode || level.size() > 1)) {
            add("a page is empty");
        }
        if (usedBytes(page) > roomForEntries(file_.layout())) {
            add("a page is too full");
        }
        std::vector<QByteArray> entries = page.entries;
        for (const IndexChild& child : page.children) {
            if (!child.bound.isEmpty()) {
                entries.push_back(child.bound);
            } else if (&child != &page.children.back() || next != 0) {
                add("a page has no bound");
            }
        }
        checkOrder(entries, last, level[at].bound);
    }

    void checkOrder(const std::vector<QByteArray>& entries, const QByteArray& last,
                    const QByteArray& bound) {
        const bool isOrdered = std::adjacent_find(entries.begin(), entries.end(),
                                                  std::greater_equal<>()) == entries.end();
        if (!isOrdered || (!entries.empty() && !last.isEmpty() && entries.front() <= last)) {
            add("the entries are not in order");
        }
        if (!entries.empty() && !bound.isEmpty() && entries.back() > bound) {
            add("the bound of a page is less than its last entry");
        }
    }

    void checkMap() {
        const std::vector<PageNumber> marked = markedPages(file_, index_.pages);
        if (!std::equal(marked.begin(), marked.end(), seen_.begin(), seen_.end())) {
            add("the map of the pages is not that of the tree");
        }
    }

    PageFile& file_;
    PageNumber owner_;
    const Index& index_;
    std::set<PageNumber> seen_;
    QStringList findings_;
};

}  // namespace

QStringList checkIndex(PageFile& file, const TableDefinition& table, const Index& index) {
    return TreeCheck(file, table, index).findings();
}

QStringList checkIndexRows(PageFile& file, const TableDefinition& table, const Index& index) {
    std::set<qint64> rows;
    QStringList findings;
    const auto add = [&](const char* what, RowPlace place) {
        if (findings.size() < kMostFindings) {
            findings.append(QStringLiteral("%1 (page %2, row %3)")
                                .arg(QLatin1StringView(what))
                                .arg(place.page)
                                .arg(place.row));
        }
    };
    for (RowScan scan(file, table); scan.next();) {
        rows.insert(rowNumber(scan.place()));
    }
    std::set<qint64> rowsWithEntry;
    for (IndexScan scan(file, index.root, {}); scan.next();) {
        const RowPlace place = scan.place();
        if (rows.count(rowNumber(place)) == 0) {
            add("an entry is of a row that is not there", place);
            continue;
        }
        if (!rowsWithEntry.insert(rowNumber(place)).second) {
            add("a row has two entries", place);
        }
        const auto found = findRow(file, place);
        const Row row(file.layout(), table, found->page, found->bytes);
        const IndexKey key = indexKey(file, table, index, row);
        if (key.isLeftOut || (key.bytes && *key.bytes != scan.key())) {
            add("an entry has another key than its row", place);
        }
    }
    for (RowScan scan(file, table); const auto found = scan.next();) {
        const Row row(file.layout(), table, found->page, found->bytes);
        if (rowsWithEntry.count(rowNumber(scan.place())) == 0 &&
            !indexKey(file, table, index, row).isLeftOut) {
            add("a row has no entry", scan.place());
        }
    }
    return findings;
}

}  // namespace varo::access
