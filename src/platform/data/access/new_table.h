#pragma once

#include "platform/data/access/table_definition.h"

#include <QList>
#include <QString>

#include <utility>

namespace varo::access {

/// Whose column it is: the program lays out and reads its own tables in a way of its own.
enum class ColumnRole {
    User,
    Catalog,
    Sid,         ///< of the catalog, with identifiers of users and groups
    Attachment,  ///< of the pattern for the tables that keep attachments
};

/// A column of a table that is to be created.
struct NewColumn {
    QString name{};
    FieldType type = FieldType::Text;
    int size = 0;  ///< characters of a text, 1 to 255; bytes of binary fields, 1 to 510
    bool isAutoNumber = false;    ///< a Long, or a GUID
    bool isRequired = false;      ///< never NULL
    bool allowsEmpty = true;      ///< texts and memos: one of no characters
    int precision = 18;           ///< of a decimal: its digits, 1 to 28
    int scale = 0;                ///< those behind the point
    QString defaultExpression{};  ///< see defaultValue(); empty for none
    ColumnRole role = ColumnRole::User;
};

/// A column of an index that is to be created.
struct NewIndexColumn {
    NewIndexColumn(QString columnName, bool descending = false)
        : name(std::move(columnName)), isDescending(descending) {}

    QString name;
    bool isDescending;
};

struct NewIndex {
    QString name{};
    QList<NewIndexColumn> columns{};  ///< 1 to 10
    bool isUnique = false;
    bool isPrimary = false;     ///< one index of a table at most
    bool ignoresNulls = false;  ///< rows with nothing but NULL are not in it
    bool isRequired = false;    ///< none of its columns may be NULL
};

/// A table that is to be created, with at most 255 columns and 32 indexes.
struct NewTable {
    QString name{};
    QList<NewColumn> columns{};
    QList<NewIndex> indexes{};
    bool isSystem = false;
};

/// Whether the fields of the column have a fixed length, and the bytes that one takes or may take;
/// 0 for a long value.
bool isFixed(const NewColumn& column);
int fieldSize(const NewColumn& column);

/// Throws data::Error that says why when a file of this version cannot have a table like this: a
/// name that is none, too many columns, a type that the version lacks, an index of no column.
void requireValid(Version version, const NewTable& table);

}  // namespace varo::access
