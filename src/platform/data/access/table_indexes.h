#pragma once

#include "platform/data/access/table_writer.h"

namespace varo::access {

/// Keeps the entries in the trees of a table's indexes. An entry is refused whose key is not known
/// for certain or, where the index is unique, belongs to another row.
class TableIndexes final : public IndexKeeper {
  public:
    /// Both parameters are to live as long.
    TableIndexes(PageFile& file, const TableDefinition& table) : file_(file), table_(table) {}

    bool inserted(const Index& index, RowPlace place, const Row& row) override;
    bool removed(const Index& index, RowPlace place, const Row& row) override;

  private:
    PageFile& file_;
    const TableDefinition& table_;
};

}  // namespace varo::access
