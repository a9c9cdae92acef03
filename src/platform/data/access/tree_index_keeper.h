#pragma once

#include "platform/data/access/table_writer.h"

namespace varo::access {

/// Keeps the entries of the indexes of a table in their trees.
class TreeIndexKeeper final : public IndexKeeper {
  public:
    /// `name` is that of the table, for messages; the others are to live as long.
    TreeIndexKeeper(PageFile& file, const TableDefinition& table, QString name);

    bool inserted(const Index& index, RowPlace place, const Row& row) override;
    bool removed(const Index& index, RowPlace place, const Row& row) override;

  private:
    std::optional<QByteArray> keyOf(const Index& index, const Row& row, bool& hasNull);
    [[noreturn]] void refuse(const Index& index, const QString& reason) const;

    PageFile& file_;
    const TableDefinition& table_;
    QString name_;
};

}  // namespace varo::access
