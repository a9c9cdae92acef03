#pragma once

#include "platform/data/access/table_definition.h"

namespace varo::access {

/// What a table demands of the fields of a column.
struct ColumnRules {
    bool isRequired = false;      ///< not NULL
    bool allowsEmpty = true;      ///< a text of no characters
    QString defaultExpression{};  ///< what a new row has where nothing is given; empty for NULL
};

/// What a table demands of its rows, besides what its definition says.
struct TableRules {
    std::vector<ColumnRules> columns;  ///< in the order of the table's columns
    bool hasRandomNumbers = false;     ///< its auto-number is not the next one
    QString refusal;                   ///< why the table cannot be written; empty when it can
};

/// Reads the rules of a table from its properties in the file's catalog. What cannot be kept
/// becomes the refusal: validation rules, data macros, properties that cannot be read, a file of
/// version Jet3, a table of the Access program itself. Relationships are RelationshipKeeper's.
/// Throws data::Error when the catalog is damaged.
TableRules readTableRules(PageFile& file, const TableDefinition& table);

/// The rules that `properties`, the bytes in the catalog, state. Throws data::Error when they are
/// damaged.
TableRules rulesOf(const TableDefinition& table, const QByteArray& properties);

/// The properties that state the rules of the columns, from which rulesOf() makes these again;
/// empty when there is nothing to state.
QByteArray propertiesOf(const TableDefinition& table, const TableRules& rules);

}  // namespace varo::access
