#include "platform/data/access/table_indexes.h"

#include "platform/data/access/index_key.h"
#include "platform/data/access/index_tree.h"

namespace varo::access {

namespace {

QString nameOf(const Index& index) {
    return index.names.value(0);
}

/// The key, of an entry that the index is to have. Throws data::Error when it is not known.
QByteArray requireKnown(const Index& index, const IndexKey& key) {
    if (!key.bytes) {
        throw data::Error(QStringLiteral("the index %1 cannot be kept: it is not known how it "
                                         "sorts the value")
                              .arg(nameOf(index)));
    }
    return *key.bytes;
}

}  // namespace

bool TableIndexes::inserted(const Index& index, RowPlace place, const Row& row) {
    const IndexKey key = indexKey(file_, table_, index, row);
    if (key.isLeftOut) {
        return false;
    }
    const QByteArray bytes = requireKnown(index, key);
    IndexTree tree(file_, table_, index);
    const bool isKnown = tree.contains(bytes);
    if (isKnown && index.isUnique && !key.hasNull) {
        throw data::Error(
            QStringLiteral("the index %1 allows a value only once").arg(nameOf(index)));
    }
    tree.insert(bytes, place);
    return !isKnown;
}

bool TableIndexes::removed(const Index& index, RowPlace place, const Row& row) {
    const IndexKey key = indexKey(file_, table_, index, row);
    if (key.isLeftOut) {
        return false;
    }
    const QByteArray bytes = requireKnown(index, key);
    IndexTree tree(file_, table_, index);
    if (!tree.remove(bytes, place)) {
        throwDamaged("an index lacks the entry of a row");
    }
    return !tree.contains(bytes);
}

}  // namespace varo::access
