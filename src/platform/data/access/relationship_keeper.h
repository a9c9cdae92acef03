#pragma once

#include "platform/data/access/relationships.h"
#include "platform/data/access/table_writer.h"

#include <functional>

namespace varo::access {

/// Keeps the relationships of the rows of a table. Rows of other tables are found through the
/// indexes and changed in the transaction of the file.
class RelationshipKeeper final : public RowFollower {
  public:
    /// Finds what writes the rows of a table. Throws data::Error when they cannot be written.
    using WriterOf = std::function<TableWriter&(const NamedTable&)>;

    /// `file` and `table`, whose relationships they are, are to live as long. `level` is how many
    /// tables a change has come through, for all keepers of the file.
    RelationshipKeeper(PageFile& file, const TableDefinition& table,
                       std::vector<Relationship> relationships, WriterOf writerOf, int& level);

    void inserted(const Row& row) override;
    void changed(const Row& before, const Row& after) override;
    void removed(const Row& row) override;

  private:
    bool isReferencing(const Relationship& relationship) const;
    bool isReferenced(const Relationship& relationship) const;
    void requireReferenced(const Relationship& relationship, const Row& row);
    std::vector<RowPlace> referencingRows(const Relationship& relationship, const Row& row);
    template <class Change>
    void changeRows(const Relationship& relationship, const std::vector<RowPlace>& places,
                    Change change);

    PageFile& file_;
    const TableDefinition& table_;
    std::vector<Relationship> relationships_;
    WriterOf writerOf_;
    int& level_;
};

}  // namespace varo::access
