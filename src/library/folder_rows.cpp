#include "library/folder_rows.h"

#include <QSet>

#include <algorithm>
#include <limits>
#include <ranges>

namespace varo {

void FolderRows::add(qint32 id, qint32 parentId, qint64 order, QStringView name) {
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

std::vector<FolderRows::Row> FolderRows::subtreeOf(qint32 folder) const {
    const auto first = std::ranges::find(rows_, folder, &Row::id);
    if (first == rows_.end()) {
        return {};
    }
    std::vector<Row> subtree;
    std::vector<Row> open{*first};
    QSet<qint32> found{folder};
    while (!open.empty()) {
        const Row next = open.back();
        open.pop_back();
        subtree.push_back(next);
        if (next.id == 0) {
            continue;  // its children are those of the library
        }
        for (const Row& child : childrenOf(next.id) | std::views::reverse) {
            if (!found.contains(child.id)) {
                found.insert(child.id);
                open.push_back(child);
            }
        }
    }
    return subtree;
}

QStringView FolderRows::name(const Row& row) const {
    return QStringView(text_).sliced(row.textBegin, row.textLength);
}

}  // namespace varo
