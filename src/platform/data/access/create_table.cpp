#include "platform/data/access/create_table.h"

#include "platform/data/access/catalog.h"
#include "platform/data/access/catalog_writer.h"
#include "platform/data/access/definition_encoder.h"
#include "platform/data/access/definition_format.h"
#include "platform/data/access/index_page.h"
#include "platform/data/access/row_page.h"
#include "platform/data/access/step.h"
#include "platform/data/access/table_rules.h"

#include <algorithm>
#include <cstring>

namespace varo::access {

namespace {

/// Adds empty maps of pages, on pages of their own.
class MapPages {
  public:
    explicit MapPages(PageFile& file) : file_(file) {}

    RowPlace add() {
        constexpr PageNumber kNoOwner = 0;
        if (page_ == 0 || room() < kMapBytes) {
            page_ = file_.add();
            RowPage::clear(file_.layout(), file_.change(page_), kNoOwner);
        }
        const QByteArray map(kMapBytes, '\0');
        RowPage page(file_.layout(), file_.change(page_));
        return {page_, page.add(Bytes(map), RowPage::Kind::Row)};
    }

  private:
    int room() { return RowPage(file_.layout(), file_.change(page_)).roomForNew(); }

    PageFile& file_;
    PageNumber page_ = 0;
};

TablePlaces::Tree addTree(PageFile& file, PageNumber owner, MapPages& maps) {
    const TablePlaces::Tree tree{file.add(), maps.add()};
    IndexPage root;
    root.owner = owner;
    writeIndexPage(file.layout(), root, file.change(tree.root));
    setMarked(file, tree.pages, tree.root, true);
    return tree;
}

TablePlaces addPlaces(PageFile& file, PageNumber owner, const NewTable& table) {
    MapPages maps(file);
    TablePlaces places;
    places.ownedPages = maps.add();
    places.pagesWithRoom = maps.add();
    for (const int column : longValueColumns(table)) {
        const RowPlace owned = maps.add();
        places.longValuePages.push_back({column, owned, maps.add()});
    }
    for (qsizetype i = 0; i < table.indexes.size(); ++i) {
        places.trees.push_back(addTree(file, owner, maps));
    }
    return places;
}

TableRules rulesFor(const NewTable& table) {
    TableRules rules;
    for (const NewColumn& column : table.columns) {
        rules.columns.push_back({column.isRequired, column.allowsEmpty, column.defaultExpression});
    }
    return rules;
}

}  // namespace

void writeDefinition(PageFile& file, PageNumber page, const QByteArray& definition) {
    const int header = file.layout().definitionHeader;
    const int pageSize = file.layout().pageSize;
    qsizetype at = 0;
    for (PageNumber number = page; number != 0;) {
        const int begin = at == 0 ? 0 : header;
        const qsizetype count = std::min<qsizetype>(pageSize - begin, definition.size() - at);
        const PageNumber next = at + count < definition.size() ? file.add() : 0;
        char* bytes = file.change(number);
        std::memset(bytes, 0, static_cast<std::size_t>(pageSize));
        std::memcpy(bytes + begin, definition.constData() + at, static_cast<std::size_t>(count));
        bytes[0] = static_cast<char>(PageKind::Table);
        bytes[1] = 1;
        // The program keeps as many bytes free behind the end as a further page begins with.
        const qsizetype free = pageSize - begin - count - header;
        qToLittleEndian(static_cast<quint16>(std::max<qsizetype>(free, 0)),
                        bytes + kFreeDefinitionBytes);
        qToLittleEndian(next, bytes + kNextDefinitionPage);
        at += count;
        number = next;
    }
}

void defineTable(PageFile& file, PageNumber page, const NewTable& table) {
    const TablePlaces places = addPlaces(file, page, table);
    writeDefinition(file, page, encodeDefinition(file.header(), table, places));
}

void createTable(PageFile& file, const NewTable& table) {
    constexpr quint32 kAllRights = 0xFFEFF;
    requireValid(file.header().version, table);
    for (const CatalogEntry& entry : userTables(file)) {
        if (entry.name.compare(table.name, Qt::CaseInsensitive) == 0) {
            throw data::Error(QStringLiteral("there is a table %1 already").arg(entry.name));
        }
    }
    NewTable whole = table;
    for (NewIndex& index : whole.indexes) {
        index.isUnique = index.isUnique || index.isPrimary;
        index.isRequired = index.isRequired || index.isPrimary;
    }
    Step step(file);
    const PageNumber page = file.add();
    defineTable(file, page, whole);
    CatalogWriter catalog(file);
    const auto id = static_cast<qint32>(page);
    catalog.addObject({.id = id,
                       .parent = kTablesContainer,
                       .name = table.name,
                       .type = kTableType,
                       .properties = propertiesOf(readTable(file, page), rulesFor(table))});
    catalog.addRight(id, KnownUser::Admin, kAllRights);
    catalog.addRight(id, KnownUser::Users, kAllRights);
    step.keep();
}

}  // namespace varo::access
