#include "platform/data/access/catalog.h"

#include "platform/data/access/value.h"

namespace varo::access {

namespace {

constexpr PageNumber kCatalogPage = 2;
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

}  // namespace

std::vector<CatalogEntry> userTables(PageFile& file) {
    const TableDefinition catalog = readTable(file, kCatalogPage);
    const Column& id = required(catalog, u"Id");
    const Column& name = required(catalog, u"Name");
    const Column& type = required(catalog, u"Type");
    const Column& flags = required(catalog, u"Flags");
    std::vector<CatalogEntry> tables;
    RowScan rows(file, catalog);
    while (const auto found = rows.next()) {
        const Row row(file.layout(), catalog, found->page, found->bytes);
        const auto number = [&](const Column& column) {
            const Value value = fieldValue(file, row, column);
            const auto* integer = std::get_if<qint64>(&value);
            return integer == nullptr ? 0 : *integer;
        };
        const Value text = fieldValue(file, row, name);
        const auto* title = std::get_if<Text>(&text);
        if (number(type) == kTable && title != nullptr &&
            (static_cast<quint32>(number(flags)) & kSystem) == 0) {
            // The high byte of an identifier is not of the page's number.
            tables.push_back(
                {QString::fromUtf8(title->utf8), static_cast<PageNumber>(number(id)) & 0xFFFFFF});
        }
    }
    return tables;
}

}  // namespace varo::access
