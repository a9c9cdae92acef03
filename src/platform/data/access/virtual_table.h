#pragma once

#include "platform/data/access/catalog.h"
#include "platform/data/access/relationship_keeper.h"
#include "platform/data/access/tree_index_keeper.h"

#include <memory>
#include <sqlite3.h>
#include <utility>
#include <vector>

namespace varo::access {

/// The name of the column, beside the one with this name, that holds the length of its long value.
/// It reads none of the value.
QString lengthColumn(const QString& column);

struct SeenTables;

/// What changes the rows of a table; made when it is first wanted.
struct RowChanger {
    /// `table` is one of `all`, which is to live as long. Throws data::Error when the table cannot
    /// be written.
    RowChanger(SeenTables& all, const TableDefinition& table, const QString& name);
    Q_DISABLE_COPY_MOVE(RowChanger)

    std::vector<Relationship> relationships;
    TableRules rules;
    TreeIndexKeeper indexes;
    RelationshipKeeper keeper;
    TableWriter writer;
};

/// A table of a file that SQLite is to see.
struct SeenTable {
    CatalogEntry entry;
    TableDefinition definition;
    QString damage;  ///< what is wrong with the definition, which then has no columns
    std::unique_ptr<RowChanger> changer;
};

/// The tables of a file, and what statements do to them.
struct SeenTables {
    PageFile& file;
    std::vector<SeenTable> tables;
    qint64 lastAutoNumber = 0;  ///< of the row that a statement inserted last
    bool isChanging = false;    ///< a row is being inserted, changed or removed
    int level = 0;              ///< how many relationships a change has come through

    /// Throws data::Error when the table cannot be written.
    TableWriter& writerOf(SeenTable& table);
};

/// While it lives, a row is being inserted, changed or removed.
class ChangingRows {
  public:
    explicit ChangingRows(SeenTables& tables)
        : tables_(tables), was_(std::exchange(tables.isChanging, true)) {}
    ~ChangingRows() { tables_.isChanging = was_; }
    Q_DISABLE_COPY_MOVE(ChangingRows)

  private:
    SeenTables& tables_;
    bool was_;
};

/// Makes the tables seen as tables of `database`, under their names. `tables` must outlive
/// `database`. A table whose names are impossible there is left out, with that as its damage.
/// Throws data::Error when no table can be made. A statement changes rows only while the file is
/// being written; when it fails, the caller is to undo what it has changed.
void showTables(sqlite3* database, SeenTables& tables);

}  // namespace varo::access
