#pragma once

#include "platform/data/access/long_value_writer.h"
#include "platform/data/access/row.h"
#include "platform/data/access/row_encoder.h"
#include "platform/data/access/table_rules.h"
#include "platform/data/access/value.h"

#include <variant>
#include <vector>

namespace varo::access {

/// Keeps the entries of a table's indexes.
class IndexKeeper {
  public:
    virtual ~IndexKeeper() = default;

    /// Adds the entry of the row to one of the table's indexes; whether none had its key before.
    /// Throws data::Error when the index does not allow it or the key is not known.
    virtual bool inserted(const Index& index, RowPlace place, const Row& row) = 0;

    /// Removes the entry of the row; whether none is left that has its key.
    virtual bool removed(const Index& index, RowPlace place, const Row& row) = 0;
};

/// Is told of the rows that were written with the entries of their indexes. What it throws undoes
/// the operation; it may itself write rows of the table.
class RowFollower {
  public:
    virtual ~RowFollower() = default;

    virtual void inserted(const Row& row) = 0;
    virtual void changed(const Row& before, const Row& after) = 0;
    virtual void removed(const Row& row) = 0;
};

/// The field stays as it is; of a new row it is what NULL is.
struct Kept {};

/// What a field is to hold. A LongField is for memo and OLE columns only.
using FieldChange = std::variant<Kept, Value, LongField>;

/// Writes the rows of a table with their long values, counts and auto-numbers, in a transaction of
/// the file. Each operation that throws data::Error, because the file cannot be written or a value
/// does not fit, leaves everything as it was, except the pages of the LongFields handed to it.
class TableWriter {
  public:
    /// All parameters are to live as long. Throws data::Error when the rules refuse.
    TableWriter(PageFile& file, const TableDefinition& table, const TableRules& rules,
                IndexKeeper& indexes, RowFollower* follower = nullptr);

    /// Adds a row with these fields, in the order of the table's columns, and returns its place,
    /// which it keeps for as long as it is there. An auto-number that is NULL becomes the next one,
    /// another field that is NULL the default of its column. Throws data::Error when that is an
    /// expression that is not understood.
    RowPlace insert(const std::vector<FieldChange>& fields);

    /// Changes fields of the row at `place`. Long values that are kept are neither read nor moved;
    /// those that are replaced are freed.
    void update(RowPlace place, const std::vector<FieldChange>& fields);

    /// Removes the row at `place` and its long values.
    void remove(RowPlace place);

  private:
    std::vector<FieldChange> withDefaults(std::vector<FieldChange> changes) const;
    std::optional<QByteArray> newField(const FieldChange& change, std::size_t column);
    void requireAllowed(const std::optional<QByteArray>& field, std::size_t column) const;
    void requireIndexed(const Fields& fields) const;
    QByteArray writeLongValue(const QByteArray& value, const Column& column);
    void fillAutoNumber(std::optional<QByteArray>& field, const Column& column);
    std::vector<RowPlace> placesOf(RowPlace place);
    void replaceRow(RowPlace place, const QByteArray& bytes);
    void insertEntry(std::size_t index, RowPlace place, const Row& row);
    void removeEntry(std::size_t index, RowPlace place, const Row& row);
    int keyCount(std::size_t index) const;
    void addToCount(int at, int change);

    PageFile& file_;
    const TableDefinition& table_;
    const TableRules& rules_;
    IndexKeeper& indexes_;
    RowFollower* follower_;  ///< null for none
    RowPages pages_;
};

}  // namespace varo::access
