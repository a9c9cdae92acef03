#include "platform/data/access/table_definition.h"

#include "platform/data/access/definition_format.h"
#include "platform/data/access/text.h"

#include <algorithm>

namespace varo::access {

namespace {

/// Bytes of the longest definition that is read; a table has 255 columns and 32 indexes at most.
constexpr qsizetype kMostBytes = 1 << 20;
constexpr int kMostColumns = 1024;
constexpr int kMostIndexes = 1024;

/// Goes through a definition from its beginning to its end.
class DefinitionReader {
  public:
    DefinitionReader(const Header& header, const Bytes& bytes)
        : header_(header), layout_(header.layout()), bytes_(bytes), at_(layout_.realIndexes) {}

    void skip(qsizetype length) { entry(length); }
    bool hasMore(qsizetype length) const { return bytes_.size() - at_ >= length; }

    Bytes entry(qsizetype length) {
        const Bytes found = bytes_.part(at_, length);
        at_ += length;
        return found;
    }

    QString name() {
        const qsizetype length =
            layout_.hasWideNumbers ? entry(2).u16(0) : qsizetype{entry(1).byte(0)};
        return layout_.hasWideNumbers ? plainText(entry(length))
                                      : codePageText(entry(length), header_.codePage);
    }

    Column column() {
        const Bytes from = entry(layout_.columnEntry);
        Column column;
        column.type = static_cast<FieldType>(from.byte(0));
        column.number = from.u16(layout_.columnNumber);
        column.variable = from.u16(layout_.columnVariable);
        const quint8 flags = from.byte(layout_.columnFlags);
        column.isFixed = (flags & kFixedLength) != 0;
        column.isAutoNumber = (column.type == FieldType::Long && (flags & kAutoNumber) != 0) ||
                              (column.type == FieldType::Guid && (flags & kAutoGuid) != 0);
        if (layout_.columnMoreFlags != 0) {
            const quint8 more = from.byte(layout_.columnMoreFlags);
            column.isCompressed = (more & kCompressed) != 0;
            column.isComputed = (more & kComputed) == kComputed;
            column.sortOrder = from.u16(layout_.columnPrecision);
            column.sortVersion = from.byte(layout_.columnPrecision + 3);
        }
        column.fixed = from.u16(layout_.columnFixed);
        column.size = from.u16(layout_.columnSize);
        column.precision = from.byte(layout_.columnPrecision);
        column.scale = from.byte(layout_.columnPrecision + 1);
        return column;
    }

    Index index() {
        const Bytes from = entry(layout_.indexEntry);
        Index index;
        for (int i = 0; i < kIndexColumns; ++i) {
            const int at = layout_.indexColumns + i * 3;
            if (from.u16(at) != kNoColumn) {
                index.columns.push_back({from.u16(at), (from.byte(at + 2) & kAscending) == 0});
            }
        }
        index.root = from.u32(layout_.indexRoot);
        index.pages = RowPlace::read(from, layout_.indexPages);
        const quint8 flags = from.byte(layout_.indexFlags);
        index.isUnique = (flags & kUnique) != 0;
        index.ignoresNulls = (flags & kIgnoresNulls) != 0;
        index.isRequired = (flags & kRequired) != 0;
        return index;
    }

  private:
    const Header& header_;
    const Layout& layout_;
    Bytes bytes_;
    qsizetype at_;
};

void readColumns(DefinitionReader& reader, int count, TableDefinition& table) {
    for (int i = 0; i < count; ++i) {
        table.columns.push_back(reader.column());
    }
    for (Column& column : table.columns) {
        column.name = reader.name();
    }
    std::sort(table.columns.begin(), table.columns.end(),
              [](const Column& left, const Column& right) { return left.number < right.number; });
}

/// Gives the trees the names of the indexes that use them.
void readIndexNames(DefinitionReader& reader, const Layout& layout, int count,
                    TableDefinition& table) {
    std::vector<Index*> named;
    for (int i = 0; i < count; ++i) {
        const Bytes from = reader.entry(layout.indexNameEntry);
        const quint32 tree = from.u32(layout.indexNameNumber + 4);
        if (tree >= table.indexes.size()) {
            throwDamaged("an index has no tree");
        }
        Index& index = table.indexes[tree];
        const quint8 kind = from.byte(layout.indexNameKind);
        index.isPrimary = index.isPrimary || kind == kPrimary;
        if (kind == kForeign) {
            table.foreignIndexes.push_back(
                {from.u32(layout.indexNameNumber), tree, from.byte(layout.indexOther),
                 from.u32(layout.indexOther + 1), from.u32(layout.indexOther + 5),
                 from.byte(layout.indexNameKind - 2), from.byte(layout.indexNameKind - 1)});
        }
        named.push_back(&index);
    }
    for (Index* index : named) {
        index->names.append(reader.name());
    }
}

/// The maps of the pages with long values stand at the end of the definition.
void readLongValuePages(DefinitionReader& reader, TableDefinition& table) {
    constexpr int kMaps = 8;
    while (reader.hasMore(2)) {
        const int column = reader.entry(2).u16(0);
        if (column == kNoColumn) {
            return;
        }
        const Bytes maps = reader.entry(kMaps);
        table.longValuePages.push_back({column, RowPlace::read(maps, 0), RowPlace::read(maps, 4)});
    }
}

}  // namespace

int TableDefinition::column(QStringView name) const {
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const Column& column) {
        return name.compare(column.name, Qt::CaseInsensitive) == 0;
    });
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

int TableDefinition::positionOf(int number) const {
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const Column& column) { return column.number == number; });
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

const Column* TableDefinition::columnByNumber(int number) const {
    const int position = positionOf(number);
    return position < 0 ? nullptr : &columns[static_cast<std::size_t>(position)];
}

const LongValuePages& TableDefinition::longValuePagesOf(const Column& column) const {
    const auto found =
        std::find_if(longValuePages.begin(), longValuePages.end(),
                     [&](const LongValuePages& pages) { return pages.column == column.number; });
    if (found == longValuePages.end()) {
        throwDamaged("a column of long values has no pages");
    }
    return *found;
}

bool isSameTable(TableDefinition one, const TableDefinition& other) {
    one.rowCount = other.rowCount;
    one.lastAutoNumber = other.lastAutoNumber;
    return one == other;
}

std::vector<PageNumber> definitionPages(PageFile& file, PageNumber page) {
    std::vector<PageNumber> pages;
    const auto most = static_cast<std::size_t>(kMostBytes / file.layout().pageSize);
    for (PageNumber next = page; next != 0;) {
        if (std::find(pages.begin(), pages.end(), next) != pages.end() || pages.size() > most) {
            throwDamaged("the definition of a table has no end");
        }
        pages.push_back(next);
        next = Bytes(*file.page(next, PageKind::Table)).u32(kNextDefinitionPage);
    }
    return pages;
}

QByteArray definitionBytes(PageFile& file, PageNumber page) {
    const int header = file.layout().definitionHeader;
    QByteArray bytes;
    for (const PageNumber each : definitionPages(file, page)) {
        bytes += file.page(each)->mid(each == page ? 0 : header);
    }
    return bytes.left(qsizetype{Bytes(bytes).u32(kDefinitionLength)} + header);
}

TableDefinition readTable(PageFile& file, PageNumber page) {
    const Layout& layout = file.layout();
    const QByteArray content = definitionBytes(file, page);
    const Bytes bytes(content);
    TableDefinition table;
    table.page = page;
    table.isSystem = bytes.byte(layout.tableType) == kSystemTable;
    table.rowCount = bytes.u32(layout.tableRowCount);
    table.lastAutoNumber = bytes.u32(layout.autoNumber);
    table.variableColumns = bytes.u16(layout.columnCount - 2);
    table.columnNumbers = bytes.u16(layout.columnCount - 4);
    table.ownedPages = RowPlace::read(bytes, layout.ownedPages);
    table.pagesWithRoom = RowPlace::read(bytes, layout.ownedPages + 4);
    const int columns = bytes.u16(layout.columnCount);
    const quint32 names = bytes.u32(layout.indexCount);
    const quint32 trees = bytes.u32(layout.indexCount + 4);
    if (columns == 0 || columns > kMostColumns || names > kMostIndexes || trees > kMostIndexes) {
        throwDamaged("a table has more columns or indexes than there can be");
    }
    DefinitionReader reader(file.header(), bytes);
    reader.skip(static_cast<qsizetype>(trees) * layout.realIndexEntry);
    readColumns(reader, columns, table);
    for (quint32 i = 0; i < trees; ++i) {
        table.indexes.push_back(reader.index());
    }
    readIndexNames(reader, layout, static_cast<int>(names), table);
    readLongValuePages(reader, table);
    return table;
}

}  // namespace varo::access
