#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <optional>

namespace varo::access {

/// Versions of the file format, in the order in which they came.
enum class Version { Jet3, Jet4, Ace12, Ace14, Ace15, Ace16, Ace17 };

/// Where the parts of a page are, by the version of the file. Places are bytes from the beginning
/// of the page unless said otherwise.
struct Layout {
    int pageSize;

    // Pages of rows
    int rowCount;    ///< of the rows on the page
    int rowOffsets;  ///< of the first one's place

    // A table's definition
    int definitionHeader;  ///< length of what each further page of it begins with
    int tableRowCount;
    int autoNumber;
    int complexAutoNumber;  ///< 0 when the version has none
    int tableType;
    int columnCount;  ///< with the number of columns of variable length before it
    int indexCount;   ///< of the names of indexes; that of their trees follows
    int ownedPages;   ///< where the map of the table's pages is; that of those with room follows
    int realIndexes;  ///< the entries of the trees
    int realIndexEntry;
    int columnEntry;
    int columnNumber;     ///< within a column's entry, as the following
    int columnVariable;   ///< place among the fields of variable length
    int columnPrecision;  ///< or the beginning of the sort order of a text
    int columnFlags;
    int columnMoreFlags;  ///< 0 when the version has none
    int columnFixed;      ///< place among the fields of fixed length
    int columnSize;
    int indexEntry;    ///< length of the entry of an index's tree
    int indexColumns;  ///< within it, as the following
    int indexPages;
    int indexRoot;
    int indexFlags;
    int indexNameEntry;   ///< length of the entry of an index's name
    int indexNameNumber;  ///< within it, as the following: the number that the index has
    int indexNameKind;

    // Pages of an index
    int indexPrevious;
    int indexNext;
    int indexTail;
    int indexPrefix;
    int indexMask;
    int indexEntries;

    // Rows
    bool hasWideNumbers;  ///< counts and offsets in a row take two bytes instead of one
};

/// Bytes of the file's first page by which its format is told.
inline constexpr int kHeaderLength = 0x100;

/// What the first page of a file says.
struct Header {
    Version version;
    quint16 codePage;   ///< of the texts in a file of version Jet3
    quint16 sortOrder;  ///< language of the sort order of texts
    quint8 sortVersion;
    bool isEncoded;  ///< its pages are encoded or encrypted
    bool hasPassword;

    const Layout& layout() const;
    bool isJet3() const { return version == Version::Jet3; }
};

/// What the `start` of a file says, kHeaderLength bytes of it; nothing when it is no Access
/// database file. Throws data::Error when it is one of a version that is not known.
std::optional<Header> readHeader(const QByteArray& start);

}  // namespace varo::access
