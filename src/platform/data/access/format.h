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
    int indexOther;       ///< the side of the table in a relationship, the other index, its table
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

/// Where a new file has the maps of the file's own free pages: the rows 0 and 1 of this page.
inline constexpr quint32 kMapsPage = 1;

/// Where it has the definition of the catalog, behind it those of the tables of rights, queries and
/// relationships. Every file has the catalog there.
inline constexpr quint32 kCatalogPage = 2;
inline constexpr quint32 kSystemTableCount = 4;

/// What a new file has.
inline constexpr quint16 kWesternCodePage = 1252;
inline constexpr quint16 kGeneralSortOrder = 0x0409;  ///< its version is 0, the oldest

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

/// The first page of a file of version Jet4 or later that was made at `created`, in days since
/// 1899-12-30, and has no password.
QByteArray newHeaderPage(Version version, double created);

/// The identifier of a user or a group as a file of version Jet4 or later has it: masked with a key
/// that is made of the `start` of the file, kHeaderLength bytes of it at least.
QByteArray maskedSid(const QByteArray& start, const QByteArray& sid);

}  // namespace varo::access
