#include "platform/data/access/catalog.h"

#include "platform/data/access/value.h"

#include <set>

namespace varo::access {

namespace {

constexpr qint64 kTable = 1;
constexpr quint32 kSystem = 0x80000002;  ///< flags of what the program keeps for itself

/// A column of the catalog, which it must have.
const Column& required(const TableDefinition& catalog, QStringView name) {
    const int column = catalog.column(name);
    if (column < 0) {
        throwDamaged("the catalog lacks a column");
    }
    return catalog.columns[static_cast<std::size_t>(column)];
}

qint64 numberIn(PageFile& file, const Row& row, const Column& column) {
    const Value value = fieldValue(file, row, column);
    const auto* integer = std::get_if<qint64>(&value);
    return integer == nullptr ? 0 : *integer;
}

/// The high byte of an identifier is not of the page's number.
PageNumber pageOf(qint64 id) {
    return static_cast<PageNumber>(id) & 0xFFFFFF;
}

/// Hands each table of the file to `take`, with its flags.
template <class Take>
void visitTables(PageFile& file, Take take) {
    const TableDefinition catalog = readTable(file, kCatalogPage);
    const Column& id = required(catalog, u"Id");
    const Column& name = required(catalog, u"Name");
    const Column& type = required(catalog, u"Type");
    const Column& flags = required(catalog, u"Flags");
    RowScan rows(file, catalog);
    while (const auto found = rows.next()) {
        const Row row(file.layout(), catalog, found->page, found->bytes);
        const Value text = fieldValue(file, row, name);
        const auto* title = std::get_if<Text>(&text);
        if (numberIn(file, row, type) == kTable && title != nullptr) {
            take(CatalogEntry{QString::fromUtf8(title->utf8), pageOf(numberIn(file, row, id))},
                 static_cast<quint32>(numberIn(file, row, flags)));
        }
    }
}

}  // namespace

std::vector<CatalogEntry> userTables(PageFile& file) {
    std::vector<CatalogEntry> tables;
    std::set<PageNumber> pages;
    visitTables(file, [&](const CatalogEntry& entry, quint32 flags) {
        if ((flags & kSystem) != 0) {
            return;
        }
        if (!pages.insert(entry.page).second) {
            throwDamaged("two tables have the same definition");
        }
        tables.push_back(entry);
    });
    return tables;
}

std::vector<CatalogEntry> allTables(PageFile& file) {
    std::vector<CatalogEntry> tables;
    visitTables(file, [&](const CatalogEntry& entry, quint32) { tables.push_back(entry); });
    return tables;
}

std::optional<PageNumber> systemTable(PageFile& file, QStringView name) {
    std::optional<PageNumber> page;
    visitTables(file, [&](const CatalogEntry& entry, quint32 flags) {
        if ((flags & kSystem) != 0 && name.compare(entry.name, Qt::CaseInsensitive) == 0) {
            page = entry.page;
        }
    });
    return page;
}

TableDetails tableDetails(PageFile& file, PageNumber page) {
    const TableDefinition catalog = readTable(file, kCatalogPage);
    const Column& id = required(catalog, u"Id");
    const Column& type = required(catalog, u"Type");
    const Column& properties = required(catalog, u"LvProp");
    const Column& macros = required(catalog, u"LvExtra");
    RowScan rows(file, catalog);
    while (const auto found = rows.next()) {
        const Row row(file.layout(), catalog, found->page, found->bytes);
        if (numberIn(file, row, type) == kTable && pageOf(numberIn(file, row, id)) == page) {
            const Value value = fieldValue(file, row, properties);
            const auto* bytes = std::get_if<QByteArray>(&value);
            return {bytes == nullptr ? QByteArray() : *bytes, row.field(macros).has_value()};
        }
    }
    return {};
}

}  // namespace varo::access
