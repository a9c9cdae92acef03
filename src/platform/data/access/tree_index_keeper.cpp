#include "platform/data/access/tree_index_keeper.h"

#include "platform/data/access/index_key.h"
#include "platform/data/access/index_tree.h"

#include <utility>

namespace varo::access {

TreeIndexKeeper::TreeIndexKeeper(PageFile& file, const TableDefinition& table, QString name)
    : file_(file), table_(table), name_(std::move(name)) {}

void TreeIndexKeeper::refuse(const Index& index, const QString& reason) const {
    throw data::Error(
        QStringLiteral("table %1, index %2: %3").arg(name_, index.names.value(0), reason));
}

/// Nothing when the index leaves the row out.
std::optional<QByteArray> TreeIndexKeeper::keyOf(const Index& index, const Row& row,
                                                 bool& hasNull) {
    const IndexKey key = indexKey(file_, table_, index, row);
    if (key.isLeftOut) {
        return std::nullopt;
    }
    if (!key.bytes) {
        refuse(index, QStringLiteral("the order of the row's values is not known"));
    }
    hasNull = key.hasNull;
    return key.bytes;
}

bool TreeIndexKeeper::inserted(const Index& index, RowPlace place, const Row& row) {
    bool hasNull = false;
    const auto key = keyOf(index, row, hasNull);
    if (!key) {
        return false;
    }
    IndexTree tree(file_, table_, index);
    const bool isNew = !tree.contains(*key);
    if (!isNew && index.isUnique && !hasNull) {
        refuse(index, QStringLiteral("another row has these values already"));
    }
    tree.insert(*key, place);
    return isNew;
}

bool TreeIndexKeeper::removed(const Index& index, RowPlace place, const Row& row) {
    bool hasNull = false;
    const auto key = keyOf(index, row, hasNull);
    if (!key) {
        return false;
    }
    IndexTree tree(file_, table_, index);
    if (!tree.remove(*key, place)) {
        refuse(index, QStringLiteral("the row is not in it; the file is damaged"));
    }
    return !tree.contains(*key);
}

}  // namespace varo::access
