#pragma once

#include "platform/data/access/row.h"

#include <QByteArray>

#include <optional>
#include <span>
#include <utility>

namespace varo::access {

/// Whether the fields of a column are whole numbers for which there are keys.
bool hasNumberKey(const Column& column);

/// The least and the largest number that such a field can have.
std::pair<qint64, qint64> numberRange(const Column& column);

/// Appends to `key` what an index has for a field with this number, whose column is of a type with
/// whole numbers; false when the column's type has no such number, or none so large.
bool appendNumberKey(const Column& column, bool isDescending, qint64 number, QByteArray& key);

/// What an index has for a field that is NULL.
QByteArray nullKey(bool isDescending);

/// What an index has for a row.
struct IndexKey {
    std::optional<QByteArray> bytes;  ///< nothing where it is not known how the key is made
    bool hasNull = false;             ///< of a column of the index; such keys may be there twice
    bool isLeftOut = false;           ///< the index ignores NULLs and the fields are all NULL
};

/// The key of a row, and of one that has these `fields` for the columns of the index, in their
/// order: the bytes of a field as the row has them (of a memo those of its text), nothing for NULL;
/// of yes one byte that is not 0. Throws data::Error when a field is damaged.
IndexKey indexKey(PageFile& file, const TableDefinition& table, const Index& index, const Row& row);
IndexKey indexKey(const Header& header, const TableDefinition& table, const Index& index,
                  std::span<const std::optional<QByteArray>> fields);

/// The key of one field that is not NULL, as above; nothing where it is not known. Of a text the
/// sort order of its column decides.
std::optional<QByteArray> fieldKey(const Header& header, const Column& column, bool isDescending,
                                   const QByteArray& field);

}  // namespace varo::access
