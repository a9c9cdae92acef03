#include "platform/data/access/create_relationship.h"

#include "platform/data/access/catalog.h"
#include "platform/data/access/catalog_writer.h"
#include "platform/data/access/create_table.h"
#include "platform/data/access/definition_encoder.h"
#include "platform/data/access/definition_format.h"
#include "platform/data/access/relationship_format.h"
#include "platform/data/access/step.h"

#include <algorithm>

namespace varo::access {

namespace {

using OnRemoval = Relationship::OnRemoval;

[[noreturn]] void throwMissing(const QString& name) {
    throw data::Error(QStringLiteral("there is no table or index %1").arg(name));
}

PageNumber tableNamed(PageFile& file, const QString& name) {
    for (const CatalogEntry& entry : userTables(file)) {
        if (entry.name == name) {
            return entry.page;
        }
    }
    throwMissing(name);
}

std::size_t indexNamed(const TableDefinition& table, const QString& name) {
    const auto found = std::find_if(table.indexes.begin(), table.indexes.end(),
                                    [&](const Index& index) { return index.names.contains(name); });
    if (found == table.indexes.end()) {
        throwMissing(name);
    }
    return static_cast<std::size_t>(found - table.indexes.begin());
}

/// Adds the index behind the others of the definition that begins on `page`.
void addForeignIndex(PageFile& file, PageNumber page, const QString& name,
                     const ForeignIndex& index) {
    const Layout& layout = file.layout();
    QByteArray bytes = definitionBytes(file, page);
    bytes.truncate(Bytes(bytes).u32(kDefinitionLength));
    const Bytes old(bytes);
    const quint32 names = old.u32(layout.indexCount);
    const quint32 trees = old.u32(layout.indexCount + 4);
    const quint16 columns = old.u16(layout.columnCount);
    const auto skipNames = [&](qsizetype at, quint32 count) {
        for (quint32 i = 0; i < count; ++i) {
            at += 2 + old.u16(at);
        }
        return at;
    };
    const qsizetype columnNames = layout.realIndexes + qsizetype{trees} * layout.realIndexEntry +
                                  qsizetype{columns} * layout.columnEntry;
    const qsizetype entries =
        skipNames(columnNames, columns) + qsizetype{trees} * layout.indexEntry;
    const qsizetype entriesEnd = entries + qsizetype{names} * layout.indexNameEntry;
    // From behind, so that the places before stay.
    bytes.insert(skipNames(entriesEnd, names), nameEntry(name));
    bytes.insert(entriesEnd, foreignIndexEntry(layout, index));
    qToLittleEndian(names + 1, bytes.data() + layout.indexCount);
    qToLittleEndian(static_cast<quint32>(bytes.size()), bytes.data() + kDefinitionLength);
    const std::vector<PageNumber> pages = definitionPages(file, page);
    std::for_each(pages.begin() + 1, pages.end(), [&](PageNumber each) { file.release(each); });
    writeDefinition(file, page, bytes);
}

quint32 indexCount(PageFile& file, PageNumber page) {
    return Bytes(*file.page(page)).u32(file.layout().indexCount);
}

}  // namespace

void createRelationship(PageFile& file, const NewRelationship& relationship) {
    const PageNumber page = tableNamed(file, relationship.table);
    const PageNumber referencedPage = tableNamed(file, relationship.referencedTable);
    const TableDefinition table = readTable(file, page);
    const TableDefinition referenced = readTable(file, referencedPage);
    ForeignIndex index;
    index.tree = indexNamed(table, relationship.index);
    index.number = indexCount(file, page);
    index.side = kReferencingSide;
    index.otherTable = referencedPage;
    index.otherNumber = indexCount(file, referencedPage) + (page == referencedPage ? 1 : 0);
    index.onChange = relationship.isFollowing ? kCascade : 0;
    index.onRemoval = static_cast<quint8>(relationship.onRemoval);
    ForeignIndex other = index;
    other.tree = indexNamed(referenced, relationship.referencedIndex);
    std::swap(other.number, other.otherNumber);
    other.side = kReferencedSide;
    other.otherTable = page;

    Step step(file);
    addForeignIndex(file, page, relationship.name, index);
    addForeignIndex(file, referencedPage,
                    QStringLiteral(".r%1").arg(QChar(u'A' + static_cast<int>(other.number))),
                    other);
    CatalogWriter(file).addRelationship(
        relationship.name, {{relationship.table, &table}, index.tree},
        {{relationship.referencedTable, &referenced}, other.tree}, *flagsOf(index));
    step.keep();
}

}  // namespace varo::access
