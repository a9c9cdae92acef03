#pragma once

#include "platform/data/access/usage_map.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace varo::access {

/// What the fields of a column are.
enum class FieldType : quint8 {
    YesNo = 1,
    Byte = 2,
    Integer = 3,
    Long = 4,
    Money = 5,
    Single = 6,
    Double = 7,
    Date = 8,
    Binary = 9,
    Text = 10,
    Ole = 11,
    Memo = 12,
    Guid = 15,
    Decimal = 16,
    Complex = 18,  ///< attachments and values of which a row has many, which are elsewhere
    BigInteger = 19,
    ExtendedDate = 20,
};

/// A column of a table.
struct Column {
    QString name;
    FieldType type{};
    int number = 0;  ///< by which rows and indexes know it; columns that were deleted keep theirs
    bool isFixed = false;  ///< its fields have a fixed length
    bool isAutoNumber = false;
    bool isCompressed = false;  ///< its texts may be stored with a byte for a character
    bool isComputed = false;
    int variable = 0;   ///< place among the fields of variable length
    int fixed = 0;      ///< place among the bytes of the fields of fixed length
    int size = 0;       ///< bytes that a field takes, or may take; of a memo or OLE field 0
    int precision = 0;  ///< digits of a decimal, and those behind its point
    int scale = 0;
    quint16 sortOrder = 0;
    quint8 sortVersion = 0;
    bool operator==(const Column&) const = default;
};

/// A column of an index.
struct IndexColumn {
    int column = 0;  ///< the number of the table's column
    bool isDescending = false;
    bool operator==(const IndexColumn&) const = default;
};

/// The maps of the pages on which the values of a memo or OLE column are.
struct LongValuePages {
    int column = 0;  ///< the number of the table's column
    RowPlace owned;
    RowPlace withRoom;
    bool operator==(const LongValuePages&) const = default;
};

/// The tree of an index, and what it demands.
struct Index {
    QStringList names;  ///< of the indexes that share the tree
    std::vector<IndexColumn> columns;
    PageNumber root = 0;
    RowPlace pages;  ///< the map of the pages of the tree
    bool isUnique = false;
    bool ignoresNulls = false;
    bool isRequired = false;
    bool isPrimary = false;
    bool operator==(const Index&) const = default;
};

/// What the definition of a table says of a relationship, as it stands there.
struct ForeignIndex {
    quint32 number = 0;    ///< by which the other table's definition knows it
    std::size_t tree = 0;  ///< among the indexes
    quint8 side = 0;       ///< whether the table refers to the other one or that to it
    quint32 otherNumber = 0;
    PageNumber otherTable = 0;
    quint8 onChange = 0;  ///< what happens then to the rows that refer to one
    quint8 onRemoval = 0;
    bool operator==(const ForeignIndex&) const = default;
};

/// How a file keeps a table.
struct TableDefinition {
    PageNumber page = 0;  ///< first one of the definition: what the rows and the catalog name it by
    bool isSystem = false;
    quint32 rowCount = 0;
    quint32 lastAutoNumber = 0;
    int variableColumns = 0;  ///< with those that were deleted
    int columnNumbers = 0;    ///< that columns have or had; none is greater
    RowPlace ownedPages;
    RowPlace pagesWithRoom;  ///< those of them
    std::vector<LongValuePages> longValuePages;
    std::vector<Column> columns;  ///< in the order of their numbers
    std::vector<Index> indexes;
    std::vector<ForeignIndex> foreignIndexes;

    /// The index of the column with this name, letter case ignored; -1 when there is none.
    int column(QStringView name) const;

    /// The column with this number; null when there is none, and its place among the columns.
    const Column* columnByNumber(int number) const;
    int positionOf(int number) const;

    /// The maps for a memo or OLE column. Throws data::Error when the definition has none.
    const LongValuePages& longValuePagesOf(const Column& column) const;
    bool operator==(const TableDefinition&) const = default;
};

/// Whether both are the same but for what changes with the rows of a table.
bool isSameTable(TableDefinition one, const TableDefinition& other);

/// The pages of the definition that begins on `page`, in their order, and its bytes without the
/// beginnings of the further pages. Throws data::Error when it has no end.
std::vector<PageNumber> definitionPages(PageFile& file, PageNumber page);
QByteArray definitionBytes(PageFile& file, PageNumber page);

/// Reads the definition that begins on `page`. Throws data::Error when it is damaged.
TableDefinition readTable(PageFile& file, PageNumber page);

}  // namespace varo::access
